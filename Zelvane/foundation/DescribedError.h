#pragma once

#include <QString>

#include <exception>

namespace zelvane {

/// Base of every failure that a user may read.
///
/// Thrown by value across coroutines and caught by reference. `description()` is in the interface
/// language at the moment of the call, so a change of language shows without any cached text.
class DescribedError : public std::exception
{
public:
    /// The text for the user, without a trailing newline. Callable from any thread.
    [[nodiscard]] virtual QString description() const = 0;

    /// A constant for debuggers. It never holds the description: descriptions may quote foreign
    /// text.
    [[nodiscard]] const char* what() const noexcept override;
};

/// A wait ended because its `std::stop_token` was asked to stop.
class CancellationError final : public DescribedError
{
public:
    [[nodiscard]] QString description() const override;
};

/// The description of a `DescribedError`, and a general sentence for any other exception.
///
/// `error` must not be null.
[[nodiscard]] QString describe(const std::exception_ptr& error);

} // namespace zelvane
