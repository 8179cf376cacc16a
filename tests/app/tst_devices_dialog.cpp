// SPDX-License-Identifier: Apache-2.0
#include "app/devices_dialog.h"

#include "memory_settings.h"
#include "support/temp_dir.h"

#include <QComboBox>
#include <QLineEdit>

#include <gtest/gtest.h>

#include <cstdlib>

using namespace quarbel::app;
using quarbel::test::MemorySettings;

namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "<unset>";
}

} // namespace

TEST(DevicesDialog, OffersEveryDeviceRemembersTheChoiceAndAppliesItToTheNextRun) {
    MemorySettings settings;
    quarbel::test::TempDir folder;
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
    EXPECT_EQ(variable("QUARBEL_OPENCL_DEVICE").empty(), false);
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
    const auto dropped = applySavedDeviceChoices(settings);
    ASSERT_TRUE(dropped.has_value());
    EXPECT_TRUE(dropped->contains("GPU \"GeForce that was taken out\"")) << dropped->toStdString();
    EXPECT_TRUE(settings.value(kGpuDeviceKey).toString().isEmpty());
    EXPECT_EQ(variable("QUARBEL_GPU"), "<unset>");
    ::unsetenv("QUARBEL_OPENCL_DEVICE");
}
