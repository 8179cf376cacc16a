// SPDX-License-Identifier: Apache-2.0
// Runs one storage workload with explicit sizes and prints its rates as plain numbers
// (MB/s = 2^20 bytes per second, or IOPS), so that a script can set them beside fio's.
//   quarbel_storage_bench sequential <block MiB> <block count>
//   quarbel_storage_bench realspeed  <file MiB> <block MiB> <pass target s> <write cap> <read cap>
//   quarbel_storage_bench random     <chunk MiB> <chunk count> <seconds>
// Output: "read=<number> write=<number>"; exit status 1 when the workload failed.
#include "workloads/storage/storage_workloads.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace quarbel;

double numberOf(const MeasurementLine& line) {
    const double value = std::strtod(line.value.c_str(), nullptr);
    return line.unit == "GB/s" ? value * 1024.0 : value;
}

int report(const BenchmarkOutcome& outcome) {
    if (outcome.status != OutcomeStatus::ok || !outcome.secondary) {
        std::fprintf(stderr, "%s\n", outcome.detail.c_str());
        return 1;
    }
    std::printf("read=%.3f write=%.3f\n", numberOf(outcome.primary), numberOf(*outcome.secondary));
    std::fprintf(stderr, "%s\n", outcome.detail.c_str());
    return 0;
}

std::int64_t mebibytes(const char* text) { return std::atoll(text) * kMebibyte; }

int usage() {
    std::fprintf(stderr,
                 "usage: quarbel_storage_bench sequential <block MiB> <count>\n"
                 "       quarbel_storage_bench realspeed <file MiB> <block MiB> <target s> <write cap> "
                 "<read cap>\n"
                 "       quarbel_storage_bench random <chunk MiB> <count> <seconds>\n");
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) return usage();
    const std::string_view kind = argv[1];
    const WorkloadContext context;
    setScratchNoticeSink([](const std::string& notice) { std::fprintf(stderr, "%s\n", notice.c_str()); });
    if (kind == "sequential" && argc == 4) {
        return report(runSSDSequential(context, {mebibytes(argv[2]), std::atoi(argv[3])}));
    }
    if (kind == "realspeed" && argc == 7) {
        SSDRealSpeedParameters parameters;
        parameters.fileSize = mebibytes(argv[2]);
        parameters.blockSize = mebibytes(argv[3]);
        parameters.passTargetSeconds = std::atof(argv[4]);
        parameters.writePassCap = std::atoi(argv[5]);
        parameters.readPassCap = std::atoi(argv[6]);
        return report(runSSDRealSpeed(context, parameters));
    }
    if (kind == "random" && argc == 5) {
        SSDRandomParameters parameters;
        parameters.preparationChunkSize = mebibytes(argv[2]);
        parameters.preparationCount = std::atoi(argv[3]);
        parameters.timeBudgetSeconds = std::atof(argv[4]);
        return report(runSSDRandom(context, parameters));
    }
    return usage();
}
