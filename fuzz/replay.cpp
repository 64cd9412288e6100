// Runs a target over stored inputs, without a fuzzer: replay FILE_OR_FOLDER...
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

// Runs a file, or all of a folder's; gives their number. An input gets no spare room, so that
// AddressSanitizer sees a read behind its end.
int Replay(const std::filesystem::path& path) {
    int inputs = 0;
    if (std::filesystem::is_directory(path)) {
        for (const auto& entry : std::filesystem::directory_iterator(path))
            inputs += Replay(entry.path());
        return inputs;
    }
    std::ifstream stream(path, std::ios::binary);
    std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(stream),
                               std::istreambuf_iterator<char>()};
    bytes.shrink_to_fit();
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    int inputs = 0;
    for (int i = 1; i < argc; ++i)
        inputs += Replay(argv[i]);
    std::printf("%d inputs\n", inputs);
    return inputs == 0 ? 1 : 0;
}
