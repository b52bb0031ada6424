#pragma once

#include <QCoroTask>
#include <QString>

#include <optional>

namespace zelvane {

/// What the accessibility service tells of an element that has the keyboard focus.
struct FocusedElement
{
    /// The attribute "AXEditable"; none if the element doesn't say.
    std::optional<bool> editable;
    /// Whether "AXSelectedText" and "AXValue" can be set.
    bool selectedTextSettable = false;
    bool valueSettable = false;
    /// A role in the names of Apple's accessibility interface, "AXStaticText"; empty if unknown.
    QString role;

    friend bool operator==(const FocusedElement&, const FocusedElement&) = default;
};

/// True if `element` is known to be unable to take pasted text. Unknown is not the same as
/// read-only.
[[nodiscard]] bool isStatic(const std::optional<FocusedElement>& element);

/// Looks at the focused element of the program in front.
class FocusInspector
{
public:
    FocusInspector() = default;
    virtual ~FocusInspector() = default;
    Q_DISABLE_COPY_MOVE(FocusInspector)

    /// None if there is no focused element, or the service or the program doesn't answer in time.
    /// Main thread; never fails and never blocks it.
    [[nodiscard]] virtual QCoro::Task<std::optional<FocusedElement>> focusedElement() = 0;
};

} // namespace zelvane
