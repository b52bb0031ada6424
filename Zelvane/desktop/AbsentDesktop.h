#pragma once

#include "desktop/HotKeyRegistrar.h"
#include "desktop/KeystrokePoster.h"
#include "desktop/MouseTap.h"
#include "desktop/Pasteboard.h"

namespace zelvane {

// What stands for the adapters in a session that lets no program press keys or watch for them. The
// permission is denied there, so that no run gets as far as these; they answer all the same.

class AbsentPasteboard final : public Pasteboard
{
public:
    /// Fails: a clipboard that can't be read must not be taken for an empty one.
    [[nodiscard]] QCoro::Task<PasteboardSnapshot> snapshot() override;
    void clear() override {}
    [[nodiscard]] QCoro::Task<std::optional<QString>> string() override;
    void setString(const QString&) override {}
    void restore(const PasteboardSnapshot&) override {}
};

class AbsentKeystrokes final : public KeystrokePoster
{
public:
    /// There is no window that could take the keys.
    [[nodiscard]] QCoro::Task<PostResult> postCommandKey(CommandKey key) override;
};

class AbsentHotKeys final : public HotKeyRegistrar
{
public:
    [[nodiscard]] bool installHandler(std::function<void(HotKeyID)> onPressed) override;
    /// Refuses every chord.
    [[nodiscard]] std::optional<Reference> registerHotKey(const KeyChord& chord,
                                                          HotKeyID id) override;
    void unregisterHotKey(Reference) override {}
};

class AbsentMouseTap final : public MouseTap
{
public:
    [[nodiscard]] bool create(Place, Handler) override { return false; }
    [[nodiscard]] bool enable() override { return false; }
    void remove() override {}
    [[nodiscard]] QString refusal() const override { return {}; }
};

} // namespace zelvane
