#pragma once

// This header and its source know nothing of Qt, whose keywords GLib's headers use as names.

#include <memory>
#include <string>

// GLib's own name for it, so that its headers need not be included here.
using GCancellable = struct _GCancellable; // NOLINT(bugprone-reserved-identifier)

/// The desktop's Secret Service, spoken to over the session bus by libsecret.
///
/// Calls block until the service answers or the call is cancelled, and are made from one thread at
/// a time. None but `add` ever raises a dialog.
namespace zelvane::secretservice {

enum class Answer {
    success,
    notFound,
    locked, ///< the user has to unlock the keyring first
    refused,
    failed,
};

struct Found
{
    Answer answer = Answer::failed;
    std::string value;
};

/// Ends a call from another thread.
class Cancellation
{
public:
    Cancellation();
    ~Cancellation();
    Cancellation(const Cancellation&) = delete;
    Cancellation& operator=(const Cancellation&) = delete;

    void cancel();
    [[nodiscard]] GCancellable* get() const { return m_cancellable; }

private:
    GCancellable* m_cancellable;
};

[[nodiscard]] Found find(const std::string& account, const Cancellation& cancellation);

/// Replaces what stood under the account. If the keyring is locked or there is none yet, the answer
/// is `locked`, and the desktop is asked, if we may, to let the user unlock or make it in the
/// meantime.
[[nodiscard]] Answer add(const std::string& account, const std::string& value, bool mayAsk,
                         const Cancellation& cancellation);

[[nodiscard]] Answer remove(const std::string& account, const Cancellation& cancellation);

} // namespace zelvane::secretservice
