#include "ui/licenses/ModelLicensesSheet.h"

#include "settings/Localization.h"
#include "ui/components/LinkLabel.h"
#include "ui/components/ScrollArea.h"
#include "ui/components/Styling.h"
#include "ui/licenses/ModelLicenseCatalog.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace zelvane {

namespace {

constexpr QSize listSize{480, 360};

QWidget* blockOf(const Theme& theme, const ModelLicenseCatalog::Entry& entry)
{
    auto* name = new ThemedLabel(theme, StyleFontRole::bodySemibold, TextTone::primary);
    name->setText(entry.name);
    auto* holder = new ThemedLabel(theme, &TypographyTokens::bodyHint, TextTone::secondary);
    holder->setText(entry.copyright);
    holder->setWordWrap(true);
    auto* license = new LinkLabel(theme);
    license->setLink(entry.licenseName, entry.licenseURL);
    auto* source = new LinkLabel(theme);
    keepTranslated(*source, [source, address = entry.sourceURL] {
        source->setLink(localizedText(QStringLiteral("Source link")), address);
    });

    auto* block = new QWidget;
    auto* column = new QVBoxLayout(block);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(2);
    column->addWidget(name);
    column->addWidget(holder);
    column->addSpacing(qRound(theme.tokens().spacing().xs)); // for the ring around a link
    auto* links = new QHBoxLayout;
    links->setContentsMargins(0, 0, 0, 0);
    links->setSpacing(qRound(theme.tokens().spacing().lg));
    links->addWidget(license);
    links->addWidget(source);
    links->addStretch(1);
    column->addLayout(links);
    return block;
}

} // namespace

ModelLicensesSheet::ModelLicensesSheet(const Theme& theme, QWidget& over)
    : Sheet(theme, over)
{
    auto* list = new QWidget;
    auto* column = new QVBoxLayout(list);
    column->setContentsMargins(0, 0, 12, 0);
    column->setSpacing(qRound(theme.tokens().spacing().lg));
    for (const ModelLicenseCatalog::Entry& entry : ModelLicenseCatalog::entries()) {
        column->addWidget(blockOf(theme, entry));
    }
    column->addStretch(1);
    auto* area = new ScrollArea(theme);
    area->setContent(list);
    setContent(area);
    setMinimumContentSize(listSize);
    TextButton* done = addButton(ControlKind::prominent);
    setDefaultButton(done);
    setCancelButton(done);
    connect(done, &QAbstractButton::clicked, this, &Sheet::dismiss);
    keepTranslated(*this, [this, done] {
        setTitle(localizedText(QStringLiteral("Third-Party Licenses")));
        done->setText(localizedText(QStringLiteral("Done")));
        done->setAccessibleName(done->text());
    });
}

} // namespace zelvane
