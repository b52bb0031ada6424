#pragma once

#include "ui/components/Sheet.h"

namespace zelvane {

/// The licences of the models, tools and data that the program downloads and runs.
class ModelLicensesSheet final : public Sheet
{
    Q_OBJECT

public:
    /// Over the window of `over`. `theme` must outlive the sheet.
    ModelLicensesSheet(const Theme& theme, QWidget& over);
};

} // namespace zelvane
