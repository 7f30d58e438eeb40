// Importing the shared sample of remote files (../shared/ir/irdb, about 285 Flipper files):
// parsing, key tables, raw-capture recognition and the codesets-file check, without disk reads.
#include <benchmark/benchmark.h>

#include <dirent.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "infrared/codeset/CCodesetLibrary.h"
#include "infrared/import/CCodesetImporter.h"

namespace {

void Collect(const std::string& dir, std::vector<std::pair<std::string, std::string>>& out) {
    DIR* handle = opendir(dir.c_str());
    if (handle == nullptr) return;
    std::vector<std::string> names;
    while (const dirent* entry = readdir(handle)) names.emplace_back(entry->d_name);
    closedir(handle);
    for (const auto& name : names) {
        if (name == "." || name == "..") continue;
        const std::string path = dir + "/" + name;
        struct stat info {};
        if (stat(path.c_str(), &info) != 0) continue;
        if (S_ISDIR(info.st_mode)) {
            Collect(path, out);
        } else if (name.size() > 3 && name.compare(name.size() - 3, 3, ".ir") == 0) {
            std::ifstream in(path, std::ios::binary);
            std::ostringstream text;
            text << in.rdbuf();
            out.emplace_back(path, text.str());
        }
    }
}

void BM_Import_SharedSample(benchmark::State& state) {
    std::vector<std::pair<std::string, std::string>> files;
    Collect(IRC_SOURCE_DIR "/../shared/ir/irdb", files);
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
