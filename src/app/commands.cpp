// SPDX-License-Identifier: Apache-2.0
#include "app/commands.h"

#include "run/benchmark_store.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

namespace quarbel::app {

QuarbelCommands::QuarbelCommands(QMenuBar& menuBar, BenchmarkStore& store, CommandHandlers handlers)
    : QObject(&menuBar), store_(store), handlers_(std::move(handlers)) {
    QMenu* quarbel = menuBar.addMenu(tr("&Quarbel"));
    about_ = quarbel->addAction(tr("About Quarbel"), this, [this] {
        if (handlers_.showAbout) handlers_.showAbout();
    });
    about_->setMenuRole(QAction::AboutRole);
    quarbel->addSeparator();
    quit_ = quarbel->addAction(tr("Quit Quarbel"), this, [this] {
        if (handlers_.quit) handlers_.quit();
    });
    // Ctrl+Q, the platform's quit binding on Linux desktops.
    quit_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    quit_->setMenuRole(QAction::QuitRole);

    QMenu* run = menuBar.addMenu(tr("&Run"));
    runSelected_ = run->addAction(tr("Run Selected"), &store_, &BenchmarkStore::runSelected);
    runSelected_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    runAll_ = run->addAction(tr("Run All"), &store_, &BenchmarkStore::runAll);
    runAll_->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R));
    stop_ = run->addAction(tr("Stop"), &store_, &BenchmarkStore::stop);
    stop_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Period));
    run->addSeparator();
    accuracyMode_ = run->addAction(tr("Accuracy Mode"));
    accuracyMode_->setCheckable(true);
    connect(accuracyMode_, &QAction::triggered, &store_, &BenchmarkStore::setAccuracyMode);
    run->addSeparator();
    history_ = run->addAction(tr("Run History"), this, [this] {
        if (handlers_.showHistory) handlers_.showHistory();
    });
    history_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_H));
    devices_ = run->addAction(tr("Devices…"), this, [this] {
        if (handlers_.showDevices) handlers_.showDevices();
    });

    QMenu* help = menuBar.addMenu(tr("&Help"));
    help_ = help->addAction(tr("Quarbel Help"), this, [this] {
        if (handlers_.showHelp) handlers_.showHelp();
    });
    help_->setShortcut(QKeySequence::HelpContents);

    connect(&store_, &BenchmarkStore::busyChanged, this, &QuarbelCommands::updateFromStore);
    connect(&store_, &BenchmarkStore::accuracyModeChanged, this, &QuarbelCommands::updateFromStore);
    updateFromStore();
}

void QuarbelCommands::updateFromStore() {
    const bool busy = store_.busy();
    runSelected_->setEnabled(!busy);
    runAll_->setEnabled(!busy);
    stop_->setEnabled(busy);
    // A run keeps the mode it started with, so the switch waits for the next run.
    accuracyMode_->setEnabled(!busy);
    // The workloads read the device choices as they start: they change between runs only.
    devices_->setEnabled(!busy);
    accuracyMode_->setChecked(store_.accuracyMode());
}

} // namespace quarbel::app
