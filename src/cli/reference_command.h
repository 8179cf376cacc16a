// The reference results that ship with Quarbel: full-suite reports of known machines, which
// `quarbel reference` lists and `quarbel compare RUN --reference NAME` places a run among.
#pragma once

#include <string>
#include <vector>

namespace quarbel::cli {

// $QUARBEL_REFERENCE_DIR when set; else share/quarbel/reference beside the installed program;
// else the folder of the source tree this program was built from.
std::string referenceDirectory();

struct ReferenceReport {
    std::string name; // the file name without ".json"
    std::string path;
};
std::vector<ReferenceReport> referenceReports(); // by name

// The report that `name` names, or a problem listing the names there are.
struct ReferenceLookup {
    std::string path;
    std::string problem;
};
ReferenceLookup findReference(const std::string& name);

// Prints one line per reference: name, machine, global score, Quarbel version and date.
int referenceCommand(bool asJson);

} // namespace quarbel::cli
