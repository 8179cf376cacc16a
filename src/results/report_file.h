// SPDX-License-Identifier: Apache-2.0
// Where `quarbel run --json` writes its report, checked before the run starts so that a
// report that cannot be written is refused at once rather than lost after the run.
#pragma once

#include <sys/types.h>

#include <string>
#include <variant>
#include <vector>

namespace quarbel {

struct ReportTarget {
    bool standardOutput = false; // "-": the report goes to standard output
    std::string path;            // absolute, symbolic links resolved: the regular file to write
    mode_t newFileMode = 0644;   // permission bits for a file that does not exist yet
};

// Resolves the argument of `option` (--json, --out, --metrics, ...), which names the option
// in every problem: "-" is standard output; anything else must name a
// regular file, new or existing, possibly through symbolic links (the file they end at
// is the one replaced, the links stay). Devices, pipes, sockets and directories are
// refused. A relative path is made absolute against today's working directory. The
// temporary file of the final write is created and removed once here, so a directory
// that refuses it fails now. Returns the one-line error otherwise.
// Reads the umask: call before any other thread runs.
std::variant<ReportTarget, std::string> resolveReportTarget(const std::string& option,
                                                            const std::string& argument);

struct ReportWrite {
    std::string problem; // empty when the report is in place
    std::string keptAt;  // a complete copy that could not be moved into place, or empty
};

// Replaces `target.path` atomically: a temporary file beside it, written, synced and
// renamed over it. An existing file keeps its permission bits. Not for standardOutput.
ReportWrite writeReportFile(const ReportTarget& target, const std::string& text);

// The names a new report may take, tried in order: "STEM.json", then "STEM-2.json",
// "STEM-3.json" … up to `count` names, made one at a time as they are tried.
struct ReportNames {
    std::string stem;
    int count = 1;
    std::string at(int index) const; // index from 0
};

struct NewReportFile {
    std::string path;    // where the report now is
    std::string problem; // why it is nowhere, else empty (no temporary file stays behind)
};

// Writes `text`, synced, under the first of `names` that is free in `directory`, never
// replacing a file: concurrent writers each get a name of their own. The file appears
// complete or not at all, with permission bits `mode`.
NewReportFile writeNewReportFile(const std::string& directory, const ReportNames& names, mode_t mode,
                                 const std::string& text);

struct NewReport {
    ReportNames names;
    std::string text;
};

struct NewReportBatch {
    std::vector<std::string> paths; // where each report now is, in order
    std::string problem;            // why none was written, else empty
};

// writeNewReportFile for many reports at once, all or nothing: every file is written, the file
// system is flushed once, then each takes its name; on any failure every file written is
// removed again. A thousand reports cost one flush, not a thousand.
NewReportBatch writeNewReportFiles(const std::string& directory, const std::vector<NewReport>& reports,
                                   mode_t mode);

} // namespace quarbel
