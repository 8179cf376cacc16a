// SPDX-License-Identifier: Apache-2.0
// The run history: every finished run's JSON report, kept on this machine under the
// XDG data directory, for `quarbel history`, `quarbel compare` and the window's history.
#pragma once

#include "results/result_statistics.h"
#include "sensors/system_manifest.h"

#include <optional>
#include <string>
#include <vector>

namespace quarbel {

// $XDG_DATA_HOME/quarbel/runs when XDG_DATA_HOME is an absolute path, else
// $HOME/.local/share/quarbel/runs; empty when neither can be worked out.
std::string historyDirectory();

struct HistorySave {
    std::string path;    // the report's file, when saved
    std::string problem; // why it was not saved, else empty
};

// Writes `reportText` atomically as a new file in `directory` (created, private to the
// user, when missing), named after the run's start: "2026-11-23-141502.json", with "-2",
// "-3" ... when that name is taken.
HistorySave saveToHistory(const std::string& directory, const std::string& startedAtIso,
                          const std::string& reportText);

struct HistoryEntry {
    std::string startedAtIso;
    std::string reportText;
};

struct HistoryBatchSave {
    std::vector<std::string> paths; // one per entry, in order, when saved
    std::string problem;            // why none was saved, else empty
};

// saveToHistory for many reports, all or nothing, with one flush of the disk for all of them.
HistoryBatchSave saveAllToHistory(const std::string& directory, const std::vector<HistoryEntry>& entries);

// One benchmark's result as a saved report gives it.
struct SavedResult {
    std::string id;
    std::string title;
    std::string status; // "ok", "skipped", "failed"
    double score = 0;
    std::optional<double> spreadPercent; // Accuracy Mode's spread, when the report has it
    ResultStatistics statistics;         // empty for reports from before results carried it
};

// What `history` lists and `compare` reads from one report file.
struct SavedRun {
    std::string path;
    std::string startedAt; // ISO 8601 as written
    std::string version;
    std::string mode; // "standard" or "accuracy"
    bool quick = false;
    bool stopped = false; // a run without a summary was stopped before its end
    std::string title;    // the summary's title, or "Stopped run"
    double runScore = 0;  // the summary's score, over the run's own benchmarks; 0 when stopped
    double globalScore = 0;
    std::string machine;   // the processor row of the system facts
    std::string machineId; // the hashed machine identifier, empty in older reports
    std::string hostName;
    std::vector<SavedResult> results;
    SystemManifest manifest; // empty in reports from before runs carried it
};

// Reads a report written by any version of `quarbel run --json` or the window. Returns the
// one-line problem for a file that is not such a report.
std::optional<SavedRun> readSavedRun(const std::string& path, std::string* problem);
// The same from a report's text; `path` is what the run is known by.
std::optional<SavedRun> savedRunFromText(const std::string& text, const std::string& path,
                                         std::string* problem);

struct HistoryListing {
    std::vector<SavedRun> runs;        // newest first
    std::vector<std::string> warnings; // one per file that was skipped, with the reason
};

// How much of each run a listing holds: everything `history` and the window show, or only
// what orders and names the runs (path, start, version, mode, scores; no results), which is
// all that picking runs by number needs and a tenth of the work on a long history.
enum class HistoryDetail { results, order };

// Every report in `directory`; files that do not read as reports are skipped with a warning.
HistoryListing listHistory(const std::string& directory, HistoryDetail detail = HistoryDetail::results);

// Whether the two runs have a benchmark in common (by title).
bool shareBenchmarks(const SavedRun& a, const SavedRun& b);

// The newest run that was not stopped, as an index into `runs` (newest first).
std::optional<std::size_t> newestCompleteRun(const std::vector<SavedRun>& runs);

// What `runs[after]` is compared with unless the user picks another: the newest complete
// run started before it that shares a benchmark with it; never itself, never a stopped run.
std::optional<std::size_t> baselineRun(const std::vector<SavedRun>& runs, std::size_t after);

} // namespace quarbel
