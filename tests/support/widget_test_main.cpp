// Entry point shared by the widget test programs: a QApplication on the
// offscreen platform, the C locale pinned (price texts carry separators) and
// no logged-on user profile, so the controls use the palette's colours.
#include <QApplication>
#include <QLocale>

#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (qEnvironmentVariableIsEmpty("QALPACK_SOURCE_DIR"))
        qputenv("QALPACK_SOURCE_DIR", QALPACK_SOURCE_DIR);
    QLocale::setDefault(QLocale::c());
    QApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
