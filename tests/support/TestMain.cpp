// The main of every test program without windows.

#include "support/TestRunner.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QCoreApplication application(argc, argv);
    return zelvane::test::runAllTests();
}
