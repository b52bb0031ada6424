// The main of the test programs that show windows.

#include "support/TestRunner.h"

#include <gtest/gtest.h>

#include <QApplication>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    return zelvane::test::runAllTests();
}
