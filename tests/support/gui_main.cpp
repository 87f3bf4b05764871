// The main function of every test that makes widgets: no display is needed, and text has the same
// pixels everywhere.
#include <gtest/gtest.h>

#include <QtCore/QLocale>
#include <QtGui/QFont>
#include <QtWidgets/QApplication>

namespace {

void setUpEnvironment() {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    for (const char* name : {"QT_SCALE_FACTOR", "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI",
                             "QT_STYLE_OVERRIDE", "QT_QPA_PLATFORMTHEME"}) {
        qunsetenv(name);
    }
    qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
    // The desktop of whoever runs the tests is left alone.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
}

void setUpLook() {
    QLocale::setDefault(QLocale::c());
    QApplication::setStyle(QStringLiteral("Fusion"));
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(12);
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setStyleStrategy(
        static_cast<QFont::StyleStrategy>(QFont::NoAntialias | QFont::NoFontMerging));
    QApplication::setFont(font);
}

}  // namespace

int main(int argc, char** argv) {
    setUpEnvironment();
    ::testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    setUpLook();
    return RUN_ALL_TESTS();
}
