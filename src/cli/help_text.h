// SPDX-License-Identifier: Apache-2.0
// The command line's description and each command's exit status, as --help shows them.
#pragma once

namespace quarbel::cli {

inline constexpr const char* kDescription =
    "Quarbel benchmarks this machine with thirteen timed, sustained workloads and scores them in "
    "Quarbel points. Everything stays on this machine.\n"
    "On Linux the GPU benchmarks use Vulkan (the benchmarks named \"Metal\") and OpenCL.";

// Each command's --help ends with the exit codes that command really returns. A bad
// argument is refused with 2 by the parser before any command runs.
inline constexpr const char* kProgramExitStatus =
    "Exit status: 0 success, 2 bad arguments; 'quarbel COMMAND --help' lists each command's own.";

inline constexpr const char* kRunExitStatus =
    "Exit status:\n"
    "  0    every benchmark ended ok or skipped\n"
    "  1    a benchmark failed, or the output, the --json report or a "
    "result card could not be written\n"
    "  2    bad input; nothing was run\n"
    "  3    with --baseline and --fail-on-slower: a benchmark stayed slower "
    "than allowed\n"
    "  4    with --baseline and --fail-on-slower: nothing slower, but a "
    "benchmark could not be judged (noisy machine, failed or skipped in one run)\n"
    "  130  stopped by Ctrl-C, SIGTERM or SIGHUP";

inline constexpr const char* kListExitStatus = "Exit status:\n"
                                               "  0    the list was printed\n"
                                               "  1    standard output could not be written\n"
                                               "  2    bad arguments";

inline constexpr const char* kInfoExitStatus = "Exit status:\n"
                                               "  0    the system facts were printed\n"
                                               "  1    standard output could not be written\n"
                                               "  2    bad arguments";

inline constexpr const char* kDevicesExitStatus = "Exit status:\n"
                                                  "  0    the devices were listed\n"
                                                  "  1    standard output could not be written\n"
                                                  "  2    bad arguments";

inline constexpr const char* kCardExitStatus =
    "Exit status:\n"
    "  0    the cards were written\n"
    "  1    a card or standard output could not be written\n"
    "  2    the report or DIR is unusable, or bad arguments; nothing "
    "was written";

inline constexpr const char* kHistoryExitStatus =
    "Exit status:\n"
    "  0    the history was printed (files that are not reports "
    "are skipped with a warning)\n"
    "  1    standard output could not be written\n"
    "  2    bad arguments";

inline constexpr const char* kCompareExitStatus =
    "Exit status:\n"
    "  0    the comparison was printed\n"
    "  1    standard output could not be written\n"
    "  2    a run that is not in the history or not a readable "
    "report, or bad arguments\n"
    "  3    with --fail-on-slower: a benchmark is slower than allowed\n"
    "  4    with --fail-on-slower: nothing slower, but a benchmark could "
    "not be judged (noisy machine, failed or skipped in one run)";

inline constexpr const char* kExportExitStatus =
    "Exit status:\n"
    "  0    the runs were exported\n"
    "  1    the output could not be written (nothing is left half-written)\n"
    "  2    a run that cannot be read, an unknown format, an unusable FILE, "
    "or bad arguments; nothing was written";

inline constexpr const char* kImportExitStatus =
    "Exit status:\n"
    "  0    every report was imported or was already in the history\n"
    "  1    the history could not be written\n"
    "  2    a file that is not a report, or bad arguments; nothing was "
    "imported";

} // namespace quarbel::cli
