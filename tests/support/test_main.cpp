// Entry point shared by every test program.
#include <QCoreApplication>
#include <QLocale>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // Defaults for running a test program by hand as well as under CTest:
    // widgets draw off screen, and tests find the shipped configuration.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsEmpty("QALPACK_SOURCE_DIR"))
        qputenv("QALPACK_SOURCE_DIR", QALPACK_SOURCE_DIR);
    QCoreApplication app(argc, argv);
    QLocale::setDefault(QLocale::c());
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
