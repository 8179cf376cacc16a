// SPDX-License-Identifier: Apache-2.0
// The reference results that ship with Quarbel: full-suite reports of known machines, which
// `quarbel reference` lists and a run can be compared with, on the command line and in the
// window's Run History.
#pragma once

#include "results/run_history.h"

#include <string>
#include <vector>

namespace quarbel {

// $QUARBEL_REFERENCE_DIR when set; else share/quarbel/reference beside the installed program;
// else the folder of the source tree this program was built from.
std::string referenceDirectory();

struct ReferenceReport {
    std::string name; // the file name without ".json"
    std::string path;
};
std::vector<ReferenceReport> referenceReports(); // by name

// The shipped reports that read, by name, each with the GPU its machine names (empty when
// none); `skipped` receives "NAME skipped: problem" for each that does not read.
struct KnownMachine {
    std::string name;
    SavedRun run;
    std::string gpu;
};
std::vector<KnownMachine> readReferences(std::vector<std::string>* skipped = nullptr);

// The report that `name` names, or a problem listing the names there are.
struct ReferenceLookup {
    std::string path;
    std::string problem;
};
ReferenceLookup findReference(const std::string& name);

// Empty for a report of this Quarbel version; else how it is marked wherever it is offered:
// "from Quarbel 0.0.9: judged only where that version scores alike".
std::string otherVersionNote(const std::string& reportVersion);

// The GPU a report's machine names; empty when it names none.
std::string referenceGpu(const std::string& path);

} // namespace quarbel
