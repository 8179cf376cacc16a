// SPDX-License-Identifier: Apache-2.0
// Devices: which GPU, OpenCL device and storage folder the benchmarks use, chosen in the window
// and remembered for the next start. Choices apply from the next run on.
#pragma once

#include "app/main_window_placement.h"

#include <QDialog>

#include <optional>

class QComboBox;
class QLabel;
class QLineEdit;

namespace quarbel::app {

inline constexpr auto kGpuDeviceKey = "QuarbelGpuDevice";
inline constexpr auto kOpenCLDeviceKey = "QuarbelOpenCLDevice";
inline constexpr auto kStorageDirectoryKey = "QuarbelStorageDirectory";

// Applies the saved choices at start-up. A choice that no longer matches anything (a GPU taken
// out, a folder removed) is dropped and the line saying so returned, for the log.
std::optional<QString> applySavedDeviceChoices(FrameSettings& settings);

class DevicesDialog : public QDialog {
    Q_OBJECT
  public:
    DevicesDialog(FrameSettings& settings, QWidget* parent = nullptr);

    QComboBox* gpuChooser() const { return gpu_; }
    QComboBox* openclChooser() const { return opencl_; }
    QLineEdit* storageField() const { return storage_; }

    // Checks and applies the choices, saves them and closes; on a problem says it and stays.
    void accept() override;

  private:
    void describeStorage();

    FrameSettings& settings_;
    QComboBox* gpu_ = nullptr;
    QComboBox* opencl_ = nullptr;
    QLineEdit* storage_ = nullptr;
    QLabel* storageInfo_ = nullptr;
    QLabel* problem_ = nullptr;
};

} // namespace quarbel::app
