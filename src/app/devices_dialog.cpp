// SPDX-License-Identifier: Apache-2.0
#include "app/devices_dialog.h"

#include "app/shared_window.h"

#include "model/number_format.h"
#include "model/storage_root.h"
#include "session/device_choices.h"
#include "workloads/gpu/device_inventory.h"
#include "workloads/storage/storage_locations.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <cstdlib>

namespace quarbel::app {
namespace {

QString qstring(const std::string& text) { return QString::fromStdString(text); }

QString translated(const char* text) {
    return QCoreApplication::translate("quarbel::app::DevicesDialog", text);
}

std::optional<std::string> saved(FrameSettings& settings, const char* key) {
    const QString value = settings.value(QString::fromLatin1(key)).toString();
    return value.isEmpty() ? std::nullopt : std::optional(value.toStdString());
}

// The name identifies a device across restarts; two devices of one name need their index.
template <typename Device> QString choiceFor(const std::vector<Device>& devices, const Device& device) {
    const auto same =
        std::count_if(devices.begin(), devices.end(), [&](const Device& d) { return d.name == device.name; });
    return same > 1 ? QString::number(device.index) : qstring(device.name);
}

template <typename Device>
void fill(QComboBox* chooser, const std::vector<Device>& devices, const QString& current,
          const QString& none) {
    const auto chosen =
        std::find_if(devices.begin(), devices.end(), [](const Device& d) { return d.chosen; });
    chooser->addItem(devices.empty()
                         ? none
                         : translated(QT_TRANSLATE_NOOP("quarbel::app::DevicesDialog", "Automatic (%1)"))
                               .arg(chosen != devices.end() ? qstring(chosen->name)
                                                            : translated(QT_TRANSLATE_NOOP(
                                                                  "quarbel::app::DevicesDialog", "none"))),
                     QString());
    for (const auto& device : devices)
        chooser->addItem(
            QStringLiteral("%1  %2 (%3)").arg(device.index).arg(qstring(device.name), qstring(device.type)),
            choiceFor(devices, device));
    chooser->setCurrentIndex(std::max(0, chooser->findData(current)));
    chooser->setEnabled(!devices.empty());
}

} // namespace

std::optional<QString> applySavedDeviceChoices(FrameSettings& settings) {
    // The notice goes to the run's log, which reports keep: it stays in English.
    QStringList dropped;
    const std::pair<const char*, const char*> keys[] = {{kGpuDeviceKey, "GPU \"%1\""},
                                                        {kOpenCLDeviceKey, "OpenCL device \"%1\""},
                                                        {kStorageDirectoryKey, "storage folder \"%1\""}};
    for (const auto& [key, what] : keys) {
        const auto value = saved(settings, key);
        if (!value) continue;
        session::DeviceChoices choice;
        if (key == kGpuDeviceKey) choice.gpu = value;
        if (key == kOpenCLDeviceKey) choice.openclDevice = value;
        if (key == kStorageDirectoryKey) choice.storageDirectory = value;
        if (session::applyDeviceChoices(choice)) {
            settings.setValue(QString::fromLatin1(key), QString());
            dropped << QString::fromLatin1(what).arg(qstring(*value));
        }
    }
    if (dropped.isEmpty()) return std::nullopt;
    return QStringLiteral("The saved %1 is no longer there; using the default.")
        .arg(dropped.join(QStringLiteral(", ")));
}

DevicesDialog::DevicesDialog(FrameSettings& settings, QWidget* parent)
    : QDialog(parent), settings_(settings) {
    setWindowTitle(tr("Devices"));
    applyDarkPalette(*this);
    setStyleSheet(styleSheet() + darkControlsStyle() +
                  QStringLiteral("QLabel#storageInfo, QLabel#devicesNote { color: #a4a7b0; }"
                                 "QLabel#devicesProblem { color: #ff8a8d; }"));
    auto* form = new QFormLayout;
    gpu_ = new QComboBox;
    fill(gpu_, gpu::listVulkanDevices(), settings_.value(QString::fromLatin1(kGpuDeviceKey)).toString(),
         tr("No Vulkan device"));
    form->addRow(tr("GPU (Vulkan)"), gpu_);
    opencl_ = new QComboBox;
    fill(opencl_, gpu::listOpenCLDevices(), settings_.value(QString::fromLatin1(kOpenCLDeviceKey)).toString(),
         tr("No OpenCL device"));
    form->addRow(tr("OpenCL device"), opencl_);

    storage_ = new QLineEdit(settings_.value(QString::fromLatin1(kStorageDirectoryKey)).toString());
    const char* tmp = std::getenv("TMPDIR");
    storage_->setPlaceholderText(
        tr("System temporary folder (%1)").arg(QString::fromLocal8Bit(tmp && *tmp ? tmp : "/tmp")));
    auto* choose = new QPushButton(tr("Choose…"));
    connect(choose, &QPushButton::clicked, this, [this] {
        const QString folder =
            QFileDialog::getExistingDirectory(this, tr("Storage folder"), storage_->text());
        if (!folder.isEmpty()) storage_->setText(folder);
    });
    auto* storageRow = new QHBoxLayout;
    storageRow->addWidget(storage_, 1);
    storageRow->addWidget(choose);
    form->addRow(tr("Storage folder"), storageRow);
    storageInfo_ = new QLabel;
    storageInfo_->setObjectName(QStringLiteral("storageInfo"));
    storageInfo_->setWordWrap(true);
    form->addRow(QString(), storageInfo_);
    connect(storage_, &QLineEdit::textChanged, this, &DevicesDialog::describeStorage);
    describeStorage();

    auto* note = new QLabel(tr("The GPU benchmarks, OpenCL Compute and the storage benchmarks use these from "
                               "the next run on. Every report names the devices it ran on."));
    note->setWordWrap(true);
    note->setObjectName(QStringLiteral("devicesNote"));
    problem_ = new QLabel;
    problem_->setWordWrap(true);
    problem_->setObjectName(QStringLiteral("devicesProblem"));
    problem_->hide();
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &DevicesDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &DevicesDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(note);
    layout->addWidget(problem_);
    layout->addWidget(buttons);
    setMinimumWidth(560);
}

void DevicesDialog::describeStorage() {
    const std::string folder =
        storage_->text().isEmpty() ? storageRootDirectory() : storage_->text().toStdString();
    if (const auto problem = storageDirectoryProblem(folder)) {
        storageInfo_->setText(qstring(*problem));
        return;
    }
    // The file system holding the folder: the longest mount point it lies under.
    const MountedFilesystem* holder = nullptr;
    const auto mounts = mountedFilesystems();
    for (const auto& mount : mounts) {
        const bool under = folder == mount.mountPoint || mount.mountPoint == "/" ||
                           folder.rfind(mount.mountPoint + "/", 0) == 0;
        if (under && (holder == nullptr || mount.mountPoint.size() > holder->mountPoint.size()))
            holder = &mount;
    }
    storageInfo_->setText(holder == nullptr
                              ? QString()
                              : tr("%1 on %2, %3 free")
                                    .arg(qstring(holder->type), qstring(holder->source),
                                         qstring(formatBytes(static_cast<std::int64_t>(holder->freeBytes)))));
}

void DevicesDialog::accept() {
    const QString gpuChoice = gpu_->currentData().toString();
    const QString openclChoice = opencl_->currentData().toString();
    const QString storageChoice = storage_->text().trimmed();
    session::DeviceChoices choices;
    if (!gpuChoice.isEmpty()) choices.gpu = gpuChoice.toStdString();
    if (!openclChoice.isEmpty()) choices.openclDevice = openclChoice.toStdString();
    if (!storageChoice.isEmpty()) choices.storageDirectory = storageChoice.toStdString();
    // The devices come from the lists; only a typed folder can be wrong. Checked before anything
    // changes, so that a wrong one leaves the earlier choices in force.
    if (choices.storageDirectory) {
        if (const auto problem = storageDirectoryProblem(*choices.storageDirectory)) {
            problem_->setText(qstring(*problem));
            problem_->show();
            return;
        }
    }
    // "Automatic" and an empty folder undo an earlier choice.
    if (!choices.gpu) ::unsetenv("QUARBEL_GPU");
    if (!choices.openclDevice) ::unsetenv("QUARBEL_OPENCL_DEVICE");
    if (!choices.storageDirectory) ::unsetenv("QUARBEL_STORAGE_DIR");
    if (const auto problem = session::applyDeviceChoices(choices)) {
        problem_->setText(qstring(*problem));
        problem_->show();
        return;
    }
    settings_.setValue(QString::fromLatin1(kGpuDeviceKey), gpuChoice);
    settings_.setValue(QString::fromLatin1(kOpenCLDeviceKey), openclChoice);
    settings_.setValue(QString::fromLatin1(kStorageDirectoryKey), storageChoice);
    QDialog::accept();
}

} // namespace quarbel::app
