// Runs a target over stored inputs, without a fuzzer: replay FILE_OR_FOLDER...
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

// Gives the input no spare room, so that AddressSanitizer sees a read behind its end.
void RunFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(stream),
                               std::istreambuf_iterator<char>()};
    bytes.shrink_to_fit();
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        if (!std::filesystem::is_directory(argv[i])) {
            RunFile(argv[i]);
            ++inputs;
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            RunFile(entry.path());
            ++inputs;
        }
    }
    std::printf("%d inputs\n", inputs);
    return inputs == 0 ? 1 : 0;
}
