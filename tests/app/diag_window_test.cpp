#include "app/diag_window_controller.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>

#include "support/temporary_folder.h"

namespace tintoral {
namespace {

// Nothing listens there: each phase fails at once.
PrinterRecord refusingPrinter() {
    return {{std::string(keys::printerId), "Network:Refusing"},
            {std::string(keys::serverType), server_types::network},
            {std::string(keys::kind), "port9:127.0.0.1"},
            {std::string(keys::ipAdrs), "127.0.0.1"},
            {std::string(keys::port), 9},
            {std::string(keys::makerName), makers::canon},
            {std::string(keys::modelName), "iP4300"},
            {std::string(keys::serialID), "SECRET77"},
            {std::string(keys::active), kYes}};
}

class DiagWindowTest : public testing::Test {
  protected:
    template <typename Widget>
    Widget& find(const char* name) {
        return *window_.findChild<Widget*>(name);
    }
    void click(const char* button) {
        QTest::mouseClick(&find<QPushButton>(button), Qt::LeftButton);
    }
    bool waitForTheEnd() {
        auto& copy = find<QPushButton>("copyButton");
        return QTest::qWaitFor([&] { return copy.isEnabled(); }, 30000);
    }
    QString shownReport() { return find<QPlainTextEdit>("reportView").toPlainText(); }

    DiagWindowController window_{nullptr};
};

TEST_F(DiagWindowTest, RunsAllPhasesAndCopiesSavesAndHides) {
    window_.setPrinterDict(refusingPrinter());
    EXPECT_FALSE(find<QPushButton>("copyButton").isEnabled());
    ASSERT_TRUE(waitForTheEnd());
    const QString report = shownReport();
    const auto phases = diagnosticPhases(refusingPrinter());
    ASSERT_GT(phases.size(), 1U);
    for (const DiagnosticPhase& phase : phases)
        EXPECT_TRUE(report.contains(QString::fromStdString(phase.title))) << phase.title;
    EXPECT_FALSE(report.contains("SECRET77"));
    QScrollBar& bar = *find<QPlainTextEdit>("reportView").verticalScrollBar();
    EXPECT_GT(bar.maximum(), 0);
    EXPECT_EQ(bar.value(), bar.maximum());

    bar.setValue(1);
    find<QCheckBox>("hideSerialNumbers").setChecked(false);
    EXPECT_TRUE(shownReport().contains("SECRET77"));
    EXPECT_EQ(bar.value(), 1);
    click("copyButton");
    EXPECT_EQ(QGuiApplication::clipboard()->text(), shownReport());
    const test::TemporaryFolder folder;
    const auto path = folder / "report.txt";
    ASSERT_TRUE(window_.saveReportTo(QString::fromStdString(path.string())));
    EXPECT_EQ(QString::fromStdString(test::readFile(path)), shownReport());
}

TEST_F(DiagWindowTest, StopEndsTheDiagnosisAndRunAgainBeginsANewOne) {
    window_.setPrinterDict(refusingPrinter());
    click("runButton");
    ASSERT_TRUE(find<QPushButton>("copyButton").isEnabled());
    QTest::qWait(50);
    EXPECT_TRUE(shownReport().contains("Stopped here."));
    EXPECT_FALSE(shownReport().contains("Phase 1"));
    click("runButton");
    ASSERT_TRUE(waitForTheEnd());
    EXPECT_FALSE(shownReport().contains("Stopped here."));
}

}  // namespace
}  // namespace tintoral
