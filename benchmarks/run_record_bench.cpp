// What the record of a run costs: organizing a folder through the controller's flows with it and without it, in turn.
//   run_record_bench FOLDER ROUNDS
// Prints one JSON line: the seconds of each round's two runs. What is organized is put back each time.

#include "OrdovanApp/controller/PreviewFlow.h"
#include "OrdovanApp/controller/RunFlow.h"
#include "OrdovanApp/controller/SystemEnvironment.h"
#include "OrdovanCore/Categories.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "%s\n", what);
    std::exit(1);
}

PreviewResult preview(const TidyPorts& ports, const Url& root) {
    PreviewInputs inputs;
    inputs.root = root;
    inputs.flag = std::make_shared<CancelFlag>();
    return PreviewFlow::run(ports, inputs);
}

/// Seconds that one organize run takes, from the lock on the folder to the history. The files are then put back.
double organize(const TidyPorts& ports, const Url& root) {
    const PreviewResult found = preview(ports, root);
    if (!found.found.plan || found.found.plan->proposals.empty()) fail("there is nothing to organize");
    RunInputs inputs;
    inputs.root = root;
    inputs.outputRoot = root.appending(OrdovanOutput::folderName);
    inputs.nowEpoch = ports.clock();
    const auto start = std::chrono::steady_clock::now();
    const RunResult run = RunFlow::organize(ports, inputs, found.found.plan->proposals);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    const std::size_t all = found.found.plan->proposals.size();
    if (run.refused || run.report->movedCount() != all || !run.record || run.record->warning || run.keepsRecord) {
        fail("not every file was organized");
    }
    inputs.memory.journal = run.record->journal;
    const RunResult back = RunFlow::undo(ports, inputs, *run.record->journal);
    if (back.refused || back.report->movedCount() != all) fail("not every file was put back");
    return taken.count();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: run_record_bench FOLDER ROUNDS\n", stderr);
        return 2;
    }
    QCoreApplication application(argc, argv);
    SystemEnvironment environment;
    const TidyPorts with = environment.ports();
    TidyPorts without = environment.ports();
    without.recording.runRecords = nullptr;
    const Url root = with.resolveExisting(Url::file(argv[1]));
    organize(with, root);  // warm up
    std::string pairs;
    for (int round = std::atoi(argv[2]); round > 0; --round) {
        // Now one first and now the other.
        const bool isWithFirst = round % 2 == 0;
        const double first = organize(isWithFirst ? with : without, root);
        const double second = organize(isWithFirst ? without : with, root);
        char text[64];
        std::snprintf(text, sizeof text, "%s[%.6f,%.6f]", pairs.empty() ? "" : ",", isWithFirst ? first : second,
                      isWithFirst ? second : first);
        pairs += text;
    }
    std::printf("{\"withAndWithout\":[%s]}\n", pairs.c_str());
    return 0;
}
