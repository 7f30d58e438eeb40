// Importing the shared sample of remote files (../shared/ir/irdb, about 285 Flipper files):
// parsing, key tables, raw-capture recognition and the codesets-file check, without disk reads.
#include <benchmark/benchmark.h>

#include <string>
#include <utility>
#include <vector>

#include "FileTree.h"
#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/import/CCodesetImporter.h"

namespace {

std::vector<std::pair<std::string, std::string>> SampleFiles() {
    std::vector<std::pair<std::string, std::string>> files;
    for (const auto& path : irtest::FilesUnder(IRC_SOURCE_DIR "/../shared/ir/irdb", ".ir")) {
        files.emplace_back(path, irtest::ReadText(path));
    }
    return files;
}

void BM_Import_SharedSample(benchmark::State& state) {
    const auto files = SampleFiles();
    if (files.empty()) {
        state.SkipWithError("the shared IR sample (../shared/ir/irdb) is absent");
        return;
    }
    std::size_t codesets = 0;
    for (auto _ : state) {
        std::string all = "{\"codesets\":[";
        codesets = 0;
        for (const auto& [path, text] : files) {
            const infrared::ImportedFile report = infrared::CCodesetImporter::ImportText(text, path, {});
            for (const auto& c : report.codesets) {
                all += (codesets++ > 0 ? "," : "") + c.json;
            }
        }
        benchmark::DoNotOptimize(infrared::CCodesetLibrary::Parse(all + "]}"));
    }
    state.counters["files"] = static_cast<double>(files.size());
    state.counters["codesets"] = static_cast<double>(codesets);
}
BENCHMARK(BM_Import_SharedSample)->Unit(benchmark::kMillisecond);

}  // namespace
