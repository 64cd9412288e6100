// Real files, which aren't part of this tree: every image of a corpus is decoded and held against
// the list expected.tsv that lies beside the files: what libtiff made of it, and the SHA-256 of its
// rows. The corpus is looked for where the environment variable VELLIM_CORPUS says, else in a
// folder shared/corpus beside the checkout; without one the tests are skipped.
//
// Where this library's rules lead to something else, exceptions.txt names the image, what comes of
// it, and the reason. Only the public headers are used, and the shared library is what is tested.

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/sha256.h"
#include "vellim/vellim.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

// ---- The lists. ----

using ImageName = std::pair<std::string, int>;  // path in the corpus, index

struct Expected {
    ImageName name;
    std::string status;
    std::string sha256;  // of the rows that libtiff gave
};

std::vector<std::string> SplitAtTabs(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, '\t');)
        fields.push_back(field);
    return fields;
}

std::vector<std::vector<std::string>> ReadTable(const fs::path& path) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream stream(path);
    for (std::string line; std::getline(stream, line);) {
        if (!line.empty() && line[0] != '#') rows.push_back(SplitAtTabs(line));
    }
    return rows;
}

fs::path CorpusFolder() {
    const char* folder = std::getenv("VELLIM_CORPUS");
    return folder != nullptr ? fs::path(folder) : fs::path(VELLIM_SOURCE_DIR "/../shared/corpus");
}

// The column names stand in the first row; a file that can't be opened has but four columns.
std::vector<Expected> ReadExpected() {
    enum Column { kPath = 0, kImage = 1, kStatus = 2, kSha256 = 11 };
    std::vector<Expected> images;
    const auto rows = ReadTable(CorpusFolder() / "expected.tsv");
    for (size_t i = 1; i < rows.size(); i++) {
        const auto& row = rows[i];
        images.push_back({{row.at(kPath), std::stoi(row.at(kImage))},
                          row.at(kStatus),
                          row.size() > kSha256 ? row[kSha256] : ""});
    }
    return images;
}

// What comes of an image instead of what its check asks for, in the check's words.
std::map<ImageName, std::string> ReadExceptions() {
    enum Column { kPath, kImage, kOutcome, kReason, kColumns };
    std::map<ImageName, std::string> outcomes;
    for (const auto& row : ReadTable(VELLIM_SOURCE_DIR "/tests/corpus/exceptions.txt")) {
        if (row.size() != kColumns || row[kReason].empty()) {
            ADD_FAILURE() << row[kPath] << ": wants an image, an outcome and a reason";
            continue;
        }
        const ImageName name(row[kPath], std::stoi(row[kImage]));
        EXPECT_TRUE(outcomes.emplace(name, row[kOutcome]).second) << row[kPath] << ": named twice";
    }
    return outcomes;
}

// ---- One image, decoded. ----

struct Decoded {
    int32_t code = 0;  // failure code, 0 for success
    bool inOrder = true;
    uint32_t lines = 0;
    uint32_t height = 0;
    size_t rowBytes = 0;
    Sha256 hash;
    std::string wantedDigest;
    bool sawWantedDigest = false;  // the lines up to some point have that digest

    void Note() { sawWantedDigest = sawWantedDigest || hash.Digest() == wantedDigest; }
};

uint32_t TakeLine(uint8_t* line, uint32_t lineNumber, uintptr_t callbackData) {
    auto& decoded = *reinterpret_cast<Decoded*>(callbackData);
    decoded.inOrder = decoded.inOrder && lineNumber == decoded.lines;
    decoded.hash.Add(line, decoded.rowBytes);
    decoded.lines++;
    decoded.Note();
    return TIFF_LINE_GO_ON;
}

Decoded DecodeImage(TiffFileHandle file, int image, const std::string& wantedDigest) {
    Decoded decoded;
    decoded.wantedDigest = wantedDigest;
    decoded.Note();
    SetTiffError(0);
    if (GetTiffImage(file, image) == 0) {
        decoded.code = TiffError();
        EXPECT_NE(decoded.code, 0) << "refused without a code";
        return decoded;
    }
    TiffDimensions dimensions{};
    if (GetTiffDimensions(file, image, &dimensions) == 0) {
        decoded.height = static_cast<uint32_t>(dimensions.biHeight);
        decoded.rowBytes =
            (static_cast<size_t>(dimensions.biWidth) * dimensions.biBitCount + 7) / 8;
    }
    const int32_t result =
        DecodeTiffImage(file, image, 0, 0, reinterpret_cast<uintptr_t>(&decoded), TakeLine);
    decoded.code = TiffError();
    EXPECT_EQ(result, decoded.code == 0 ? 1 : 0);
    EXPECT_TRUE(decoded.inOrder) << "lines out of order";
    if (decoded.code == 0) {
        EXPECT_EQ(decoded.lines, decoded.height) << "success with lines missing";
    } else {
        EXPECT_LE(decoded.lines, decoded.height);
    }
    return decoded;
}

struct OpenFileAndBlock {
    TiffFileHandle file = 0;
    GlobalHandle block = 0;

    OpenFileAndBlock() = default;
    OpenFileAndBlock(const OpenFileAndBlock&) = delete;
    OpenFileAndBlock& operator=(const OpenFileAndBlock&) = delete;
    ~OpenFileAndBlock() {
        CloseTiffFile(file);
        GlobalFree(block);
    }
};

void OpenCopyInMemory(const fs::path& path, OpenFileAndBlock& opened) {
    const auto size = static_cast<uint32_t>(fs::file_size(path));
    opened.block = GlobalAlloc(GHND, size);
    void* bytes = GlobalLock(opened.block);
    ASSERT_NE(bytes, nullptr);
    std::ifstream(path, std::ios::binary).read(static_cast<char*>(bytes), size);
    GlobalUnlock(opened.block);
    opened.file = OpenTiffInMemory(opened.block, static_cast<int32_t>(size), T_READ);
}

// Decodes one image from disk and from memory, which must not differ. Nothing when the file can't
// be opened. An index of -1 stands for the first image.
std::optional<Decoded> Decode(const Expected& expected) {
    // Relative paths, since a path is limited to TIFF_PATH_BYTES.
    fs::current_path(CorpusFolder());
    OpenFileAndBlock disk;
    disk.file = OpenTiffFile(expected.name.first.c_str(), T_READ);
    const int32_t openCode = TiffError();
    OpenFileAndBlock memory;
    OpenCopyInMemory(expected.name.first, memory);
    EXPECT_EQ(TiffError(), openCode);
    EXPECT_EQ(disk.file == 0, memory.file == 0);
    if (disk.file == 0) {
        EXPECT_NE(openCode, 0) << "not opened, without a code";
        return std::nullopt;
    }
    const int image = expected.name.second < 0 ? 0 : expected.name.second;
    Decoded decoded = DecodeImage(disk.file, image, expected.sha256);
    const Decoded fromMemory = DecodeImage(memory.file, image, expected.sha256);
    EXPECT_EQ(fromMemory.code, decoded.code) << "memory and disk differ";
    EXPECT_EQ(fromMemory.hash.Digest(), decoded.hash.Digest()) << "memory and disk differ";
    return decoded;
}

// ---- What each status asks for. Each gives "" or what came instead. ----

std::string Outcome(const std::optional<Decoded>& decoded) {
    if (!decoded) return "not opened";
    return "code " + std::to_string(decoded->code) + ", " + std::to_string(decoded->lines) +
           " of " + std::to_string(decoded->height) + " lines, digest " +
           decoded->hash.Digest().substr(0, 16);
}

// libtiff decodes it whole.
std::string CheckOk(const std::optional<Decoded>& decoded, const Expected& expected) {
    const bool same = decoded && decoded->code == 0 && decoded->hash.Digest() == expected.sha256;
    return same ? "" : Outcome(decoded);
}

// libtiff gives up somewhere: a failure, behind at least the lines that libtiff had.
std::string CheckDamaged(const std::optional<Decoded>& decoded, const Expected& expected) {
    const bool failed = decoded ? decoded->code != 0 && decoded->sawWantedDigest
                                : expected.sha256 == Sha256().Digest();
    return failed ? "" : Outcome(decoded);
}

// Tiles, planes, other depths or compressions, lines that aren't width x bits long: refused before
// the first line.
std::string CheckUnsupported(const std::optional<Decoded>& decoded, const Expected& /*expected*/) {
    const bool refused = !decoded || (decoded->code != 0 && decoded->lines == 0);
    return refused ? "" : Outcome(decoded);
}

// libtiff can't open it. What is asked for then stands in Decode and DecodeImage.
std::string CheckOpen(const std::optional<Decoded>& /*decoded*/, const Expected& /*expected*/) {
    return "";
}

using Check = std::string (*)(const std::optional<Decoded>&, const Expected&);

const std::map<std::string, Check> kChecks = {{"ok", CheckOk},
                                              {"damaged", CheckDamaged},
                                              {"unsupported", CheckUnsupported},
                                              {"linesize", CheckUnsupported},
                                              {"open", CheckOpen}};

class Corpus : public testing::TestWithParam<const char*> {};

TEST_P(Corpus, ImagesAreWhatLibtiffMakesOfThem) {
    if (!fs::exists(CorpusFolder() / "expected.tsv")) {
        GTEST_SKIP() << "no corpus in " << CorpusFolder();
    }
    const auto exceptions = ReadExceptions();
    int images = 0;
    for (const Expected& expected : ReadExpected()) {
        if (expected.status != GetParam()) continue;
        SCOPED_TRACE(expected.name.first + ", image " + std::to_string(expected.name.second));
        const std::string outcome = kChecks.at(expected.status)(Decode(expected), expected);
        const auto exception = exceptions.find(expected.name);
        if (exception == exceptions.end()) {
            EXPECT_TRUE(outcome.empty()) << outcome;
        } else {
            EXPECT_EQ(outcome, exception->second) << "not what exceptions.txt says";
        }
        images++;
    }
    EXPECT_GT(images, 0);
}

INSTANTIATE_TEST_SUITE_P(Status, Corpus,
                         testing::Values("ok", "damaged", "unsupported", "linesize", "open"),
                         [](const auto& status) { return std::string(status.param); });

// A name that fits no image would hide behind its reason for ever; a status that no check knows
// would be passed over.
TEST(CorpusLists, FitTogether) {
    if (!fs::exists(CorpusFolder() / "expected.tsv")) {
        GTEST_SKIP() << "no corpus in " << CorpusFolder();
    }
    auto exceptions = ReadExceptions();
    for (const Expected& expected : ReadExpected()) {
        EXPECT_TRUE(kChecks.contains(expected.status)) << expected.status;
        exceptions.erase(expected.name);
    }
    for (const auto& [name, outcome] : exceptions)
        ADD_FAILURE() << name.first << ": not in the corpus";
}

TEST(Sha256, HasTheDigestsOfTheStandardsExamples) {
    const struct {
        std::string text;
        const char* digest;
    } cases[] = {{"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
                 {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
                 {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
                  "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
                 {std::string(1000000, 'a'),
                  "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"}};
    for (const auto& example : cases) {
        Sha256 hash;
        hash.Add(reinterpret_cast<const uint8_t*>(example.text.data()), example.text.size());
        EXPECT_EQ(hash.Digest(), example.digest);
    }
}

}  // namespace
}  // namespace vellim::test
