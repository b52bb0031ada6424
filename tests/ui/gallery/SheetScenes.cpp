#include "ui/gallery/SettingsExhibit.h"
#include "ui/licenses/ModelLicensesSheet.h"
#include "ui/sheets/APIKeyEditSheet.h"
#include "ui/sheets/HotKeyBindSheet.h"
#include "ui/sheets/PromptEditSheet.h"

namespace zelvane::gallery {

namespace {

using enum SettingsCategory;

constexpr quint32 keyT = 17;
constexpr quint64 controlAndOption = 0x40000 | 0x80000;
const KeyChord chord{keyT, KeyChord::control | KeyChord::option};

/// The keys that were pressed in the sheet.
using Pressing = std::function<void(HotKeyBindModel&)>;

void pressChord(HotKeyBindModel& model)
{
    model.keyPressed(keyT, controlAndOption);
}

Scene keysScene(const QString& name, const Pressing& press, const QSet<KeyChord>& reserved = {},
                const std::function<bool(const KeyChord&)>& isHeldElsewhere = {})
{
    return settingsScene(
        QStringLiteral("sheet-keys") + name,
        {.category = languages,
         .open = [press, reserved, isHeldElsewhere](SettingsExhibit& exhibit) {
             auto model = std::make_unique<HotKeyBindModel>(QStringLiteral("ANY-DE"), std::nullopt,
                                                            reserved, isHeldElsewhere);
             if (press) {
                 press(*model);
             }
             (new HotKeyBindSheet(exhibit.theme(), exhibit.view(), std::move(model)))->present();
         }});
}

QList<Scene> keysScenes()
{
    return {
        keysScene({}, {}),
        keysScene(QStringLiteral("-captured"), pressChord),
        keysScene(QStringLiteral("-reserved"), pressChord, {chord}),
        keysScene(QStringLiteral("-held"), pressChord, {}, [](const KeyChord&) { return true; }),
        keysScene(QStringLiteral("-plain"),
                  [](HotKeyBindModel& model) { model.keyPressed(keyT, 0); }),
        keysScene(QStringLiteral("-cleared"), [](HotKeyBindModel& model) { model.clear(); }),
    };
}

Scene promptScene(const QString& name, const QString& draft)
{
    return settingsScene(
        QStringLiteral("sheet-prompt") + name, {.open = [draft](SettingsExhibit& exhibit) {
            auto model =
                std::make_unique<PromptEditModel>(QStringLiteral("ANY-DE"), QStringLiteral(" "));
            auto* sheet = new PromptEditSheet(exhibit.theme(), exhibit.view(), std::move(model));
            sheet->present();
            if (!draft.isNull()) {
                sheet->editor().setPlainText(draft);
            }
        }});
}

Scene keyScene(const QString& name, const QString& key)
{
    return settingsScene(
        QStringLiteral("sheet-key") + name,
        {.provider = AIProvider::chatGPT, .apiKey = key, .open = [key](SettingsExhibit& exhibit) {
             (new APIKeyEditSheet(exhibit.theme(), exhibit.view(),
                                  APIKeyEditModel(QStringLiteral("ChatGPT"), key)))
                 ->present();
         }});
}

} // namespace

QList<Scene> sheetScenes()
{
    return keysScenes() +
           QList<Scene>{
               promptScene({}, {}),
               promptScene(QStringLiteral("-blank"), QStringLiteral("")),
               keyScene({}, QStringLiteral("sk-123")),
               keyScene(QStringLiteral("-empty"), {}),
               settingsScene(
                   QStringLiteral("sheet-licenses"),
                   {.category = general,
                    .open =
                        [](SettingsExhibit& exhibit) {
                            (new ModelLicensesSheet(exhibit.theme(), exhibit.view()))->present();
                        }}),
           };
}

} // namespace zelvane::gallery
