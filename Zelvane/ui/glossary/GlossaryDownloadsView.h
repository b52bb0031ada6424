#pragma once

#include "ui/components/Form.h"
#include "ui/components/Indicators.h"
#include "ui/glossary/GlossaryDownloadsModel.h"
#include "ui/language/SearchableLanguagePicker.h"

#include <QWidget>

class QVBoxLayout;

namespace zelvane {

/// The glossaries to download and to delete, and a row for any other pair of languages.
class GlossaryDownloadsView final : public QWidget
{
    Q_OBJECT

public:
    /// All must outlive the view.
    GlossaryDownloadsView(const Theme& theme, const AppSettings& settings,
                          GlossaryManager& manager);
    ~GlossaryDownloadsView() override;

    [[nodiscard]] GlossaryDownloadsModel& model() { return m_model; }
    [[nodiscard]] TextButton& manualButton() const { return *m_download; }

protected:
    bool event(QEvent* event) override;

private:
    class Row;

    [[nodiscard]] QWidget* makeManualRow();
    void retranslate();
    /// Adds rows until there are `count` of them.
    void addRows(qsizetype count);
    void update();

    const Theme& m_theme;
    GlossaryDownloadsModel m_model;
    QList<Row*> m_rows;
    // All owned by Qt's tree.
    QWidget* m_proposed; ///< the rows and the line below them
    QVBoxLayout* m_list;
    SearchableLanguagePicker* m_source;
    SearchableLanguagePicker* m_target;
    TextButton* m_download;
    ThemedLabel* m_problem;
};

} // namespace zelvane
