#include "stored_data.h"

#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>

namespace vellim::test {

std::vector<std::vector<Bytes>> StoredStrips(const std::string& path) {
    const Bytes file = ReadFile(path);
    const auto json = nlohmann::json::parse(RunTool("info --json " + path).out);
    std::vector<std::vector<Bytes>> images;
    for (const auto& image : json["files"][0]["images"]) {
        std::vector<size_t> offsets, counts;
        for (const auto& tag : image["tags"]) {
            if (tag["tag"] == 273) offsets = tag["value"].get<std::vector<size_t>>();
            if (tag["tag"] == 279) counts = tag["value"].get<std::vector<size_t>>();
        }
        std::vector<Bytes>& strips = images.emplace_back();
        for (size_t i = 0; i < offsets.size(); ++i) {
            const auto from = file.begin() + static_cast<ptrdiff_t>(offsets[i]);
            strips.emplace_back(from, from + static_cast<ptrdiff_t>(counts.at(i)));
        }
    }
    return images;
}

ToolRun TiffInfo(const std::string& path) {
    ToolRun run = RunTool("--version >" + NewPath("version") + "; tiffinfo " + path);
    std::istringstream lines(std::exchange(run.err, {}));
    for (std::string line; std::getline(lines, line);) {
        if (line.find("Unknown field with tag") == std::string::npos) run.err += line + "\n";
    }
    return run;
}

}  // namespace vellim::test
