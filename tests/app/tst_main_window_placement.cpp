// SPDX-License-Identifier: Apache-2.0
// The window's saved settings: where the main window opens, how often its frame is written,
// and the devices chosen for the next run.
#include "app/devices_dialog.h"
#include "app/main_window_placement.h"
#include "support/event_loop.h"
#include "support/temp_dir.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QMoveEvent>
#include <QResizeEvent>
#include <QWidget>

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>

using namespace quarbel::app;
using namespace quarbel::test;
namespace placement = quarbel::app::MainWindowPlacement;

namespace {

class MemorySettings : public FrameSettings {
  public:
    QVariant value(const QString& key) const override {
        const auto it = values.find(key);
        return it == values.end() ? QVariant() : it->second;
    }
    void setValue(const QString& key, const QVariant& value) override {
        values[key] = value;
        if (key == QLatin1String(placement::kFrameKey)) ++frameWrites;
    }
    std::map<QString, QVariant> values;
    int frameWrites = 0;
};

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "<unset>";
}

const QList<QRect> kScreens{QRect(0, 0, 1920, 1080), QRect(1920, 0, 1280, 1024)};

} // namespace

TEST(MainWindowPlacement, RestoresOnlyAUsableSavedFrameElseCentresAndFitsTheScreen) {
    const QRect centred(460, 190, 1000, 700); // 1000 x 700 centred on the first screen
    const QList<QRect> laptop{QRect(0, 0, 1366, 768)};
    const QList<QRect> laptopWithPanel{QRect(0, 28, 1366, 740)};
    const QList<QRect> tiny{QRect(0, 0, 800, 600)};
    // clang-format off
    const struct Case {
        const char* name;
        QVariant hasSavedFrame;
        QVariant frame;
        QRect expected; // position and content size after configure
        QList<QRect> screens = kScreens;
        QSize minimum{840, 560};
        QSize startSize{1000, 700};
    } cases[] = {
        {"first launch", {}, {}, centred},
        {"valid frame", true, "100 120 900 640", {100, 120, 900, 640}},
        {"frame on the second screen", true, "2000 50 1100 800", {2000, 50, 1100, 800}},
        {"frame partly off the left edge", true, "-500 100 900 640", {0, 100, 900, 640}},
        {"frame that fits a smaller screen, crossing its right edge", true, "600 100 1200 700", {166, 68, 1200, 700}, laptop},
        {"frame narrower than 840", true, "10 20 839 700", centred},
        {"frame lower than 560", true, "10 20 1000 559", centred},
        {"frame off every screen", true, "3300 0 1000 700", centred},
        {"frame not marked saved", false, "100 120 900 640", centred},
        {"three numbers", true, "100 120 900", centred},
        {"commas", true, "100,120,900,640", centred},
        {"two blanks", true, "100  120 900 640", centred},
        {"words", true, "left top wide high", centred},
        {"not a string", true, QRect(100, 120, 900, 640), centred},
        {"small window grows to the minimum", {}, {}, {540, 260, 840, 560}, kScreens, {840, 560}, {600, 400}},
        {"default taller than the screen", {}, {}, {83, 0, 1200, 768}, laptop, {840, 560}, {1200, 820}},
        {"default beside a panel", {}, {}, {83, 28, 1200, 740}, laptopWithPanel, {840, 560}, {1200, 820}},
        {"frame taller than its screen", true, "100 200 900 1200", {100, 0, 900, 1080}},
        {"frame larger than the screen it overlaps most", true, "2000 100 1400 1100", {1920, 0, 1280, 1024}},
        {"frame from a larger screen", true, "0 0 1900 1000", {0, 28, 1366, 740}, laptopWithPanel},
        {"screen smaller than the minimum", {}, {}, {0, 0, 800, 600}, tiny, {800, 560}, {1200, 820}},
        {"frame on a screen smaller than the minimum", true, "0 0 900 640", {0, 0, 800, 600}, tiny, {800, 560}},
    };
    // clang-format on
    for (const Case& c : cases) {
        MemorySettings settings;
        if (c.hasSavedFrame.isValid()) settings.values[placement::kHasSavedFrameKey] = c.hasSavedFrame;
        if (c.frame.isValid()) settings.values[placement::kFrameKey] = c.frame;
        QWidget window;
        window.resize(c.startSize);
        placement::configure(window, settings, c.screens);
        EXPECT_EQ(QRect(window.pos(), window.size()), c.expected) << c.name;
        EXPECT_EQ(window.minimumSize(), c.minimum) << c.name;
    }
}

TEST(MainWindowPlacement, AFittedFrameLeavesRoomForTheWindowManagersDecorations) {
    const QMargins titleBar(0, 30, 0, 0);
    const std::tuple<QRect, QRect, QRect> fits[] = {
        // frame, screen, the frame fitted
        {{40, 10, 1200, 820}, {0, 0, 1366, 768}, {40, 0, 1200, 738}},  // cut to the screen
        {{40, 10, 1200, 700}, {0, 0, 1366, 768}, {40, 10, 1200, 700}}, // left alone
        {{40, 60, 1200, 700}, {0, 0, 1366, 768}, {40, 38, 1200, 700}}, // moved up until its foot is on screen
        {{0, 0, 900, 640}, {0, 0, 900, 580}, {0, 0, 900, 560}}, // not below the minimum height, with room
    };
    for (const auto& [frame, screen, fitted] : fits)
        EXPECT_EQ(placement::fittedFrame(frame, screen, titleBar), fitted) << frame.y();
    // The whole window fits 1280 x 720 and 1366 x 768, from a frame saved on a larger screen.
    for (const QRect& screen : {QRect(0, 0, 1280, 720), QRect(0, 0, 1366, 768)}) {
        const QRect fitted = placement::fittedFrame({300, 200, 1400, 900}, screen, titleBar);
        EXPECT_TRUE(screen.contains(fitted.adjusted(0, 0, 0, 30))) << fitted.x() << "," << fitted.y();
    }
}

TEST(MainWindowPlacement, ASecondWindowOpensBesideTheFirstAndStaysOnScreen) {
    QWidget window;
    window.move(100, 100);
    window.resize(1000, 700);
    placement::cascade(window, 0, kScreens);
    EXPECT_EQ(window.pos(), QPoint(100, 100)) << "alone: where it was placed";
    placement::cascade(window, 2, kScreens);
    EXPECT_EQ(window.pos(), QPoint(164, 164));
    QWidget low;
    low.move(900, 370);
    low.resize(1000, 700);
    placement::cascade(low, 1, {QRect(0, 0, 1920, 1080)});
    EXPECT_EQ(low.pos(), QPoint(920, 380)) << "moved, then back in from the screen's edges";
}

TEST(MainWindowPlacementCoordinator, BurstOfResizesWritesOnceCloseWritesAtOnceAndTheFrameComesBack) {
    MemorySettings settings;
    QWidget window;
    window.setGeometry(-300, 100, 900, 600);
    placement::Coordinator coordinator(settings);
    coordinator.observe(window);

    for (int i = 1; i <= 10; ++i) {
        window.resize(900 + i, 600 + i);
        QResizeEvent resize(window.size(), QSize(899 + i, 599 + i));
        QCoreApplication::sendEvent(&window, &resize);
    }
    QMoveEvent move(QPoint(-300, 100), QPoint(90, 90));
    QCoreApplication::sendEvent(&window, &move);
    EXPECT_EQ(settings.frameWrites, 0) << "a save waits for the burst to end";
    ASSERT_TRUE(processEventsUntil([&] { return settings.frameWrites > 0; }));
    EXPECT_FALSE(coordinator.savePending());
    EXPECT_EQ(settings.frameWrites, 1);
    EXPECT_EQ(settings.values[placement::kFrameKey].toString(), QStringLiteral("-300 100 910 610"));

    window.resize(1000, 700);
    QResizeEvent resize(window.size(), QSize(910, 610));
    QCoreApplication::sendEvent(&window, &resize);
    window.close();
    EXPECT_EQ(settings.frameWrites, 2) << "closing saves at once";
    EXPECT_FALSE(coordinator.savePending()) << "and drops the pending save";
    EXPECT_EQ(settings.values[placement::kFrameKey].toString(), QStringLiteral("-300 100 1000 700"));
    EXPECT_TRUE(settings.values[placement::kHasSavedFrameKey].toBool());

    QWidget next;
    placement::configure(next, settings, kScreens);
    EXPECT_EQ(QRect(next.pos(), next.size()), QRect(0, 100, 1000, 700)) << "brought back on screen whole";
}

TEST(DevicesDialog, OffersEveryDeviceRemembersTheChoiceAndAppliesItToTheNextRun) {
    MemorySettings settings;
    TempDir folder;
    {
        DevicesDialog dialog(settings);
        ASSERT_EQ(dialog.gpuChooser()->count(), 2) << "Automatic and lavapipe";
        EXPECT_TRUE(dialog.gpuChooser()->itemText(0).startsWith("Automatic (llvmpipe"));
        EXPECT_GE(dialog.openclChooser()->count(), 2) << "Automatic and PoCL";
        dialog.gpuChooser()->setCurrentIndex(1);
        dialog.openclChooser()->setCurrentIndex(1);
        dialog.storageField()->setText(QString::fromStdString(folder.path().string() + "/missing"));
        dialog.accept();
        EXPECT_EQ(dialog.result(), QDialog::Rejected) << "a folder that is not there keeps the dialog open";
        EXPECT_TRUE(settings.values.empty()) << "and changes nothing";
        dialog.storageField()->setText(QString::fromStdString(folder.path().string()));
        dialog.accept();
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
    }
    EXPECT_EQ(variable("QUARBEL_GPU"), "llvmpipe (LLVM 15.0.6, 256 bits)");
    EXPECT_NE(variable("QUARBEL_OPENCL_DEVICE"), "<unset>");
    EXPECT_EQ(variable("QUARBEL_STORAGE_DIR"), folder.path().string());
    EXPECT_EQ(settings.value(kStorageDirectoryKey).toString().toStdString(), folder.path().string());

    // Reopened, it shows what was chosen; Automatic undoes it.
    {
        DevicesDialog dialog(settings);
        EXPECT_EQ(dialog.gpuChooser()->currentIndex(), 1);
        EXPECT_EQ(dialog.storageField()->text().toStdString(), folder.path().string());
        dialog.gpuChooser()->setCurrentIndex(0);
        dialog.storageField()->clear();
        dialog.accept();
    }
    EXPECT_EQ(variable("QUARBEL_GPU"), "<unset>");
    EXPECT_EQ(variable("QUARBEL_STORAGE_DIR"), "<unset>");

    // At the next start, a saved choice that is gone is dropped and named.
    settings.setValue(kGpuDeviceKey, QStringLiteral("GeForce that was taken out"));
    const QString dropped = applySavedDeviceChoices(settings).value_or(QString());
    EXPECT_TRUE(dropped.contains("GPU \"GeForce that was taken out\"")) << dropped.toStdString();
    EXPECT_TRUE(settings.value(kGpuDeviceKey).toString().isEmpty());
    EXPECT_EQ(variable("QUARBEL_GPU"), "<unset>");
    ::unsetenv("QUARBEL_OPENCL_DEVICE");
}
