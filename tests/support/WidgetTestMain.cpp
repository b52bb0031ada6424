// The main of the test programs that show windows.

#include "support/TestRunner.h"

#include <gtest/gtest.h>

#include <QApplication>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
/// Fontconfig keeps what it has read for ever.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig";
}
#endif
#endif

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    return zelvane::test::runAllTests();
}
