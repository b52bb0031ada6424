#include "desktop/Logging.h"

namespace zelvane {

Q_LOGGING_CATEGORY(accessibilityLog, "org.zelvane.desk.accessibility", QtInfoMsg)

} // namespace zelvane
