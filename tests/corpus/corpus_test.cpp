// Real files, which aren't part of this tree: every image of a corpus is decoded and held against
// the list expected.tsv that lies beside the files: what libtiff made of it, and the SHA-256 of its
// rows. The corpus is looked for where the environment variable VELLIM_CORPUS says, else in a
// folder shared/corpus beside the checkout; without one the tests are skipped.
//
// Where this library's rules lead to something else, exceptions.txt names the image, what comes of
// it, and the reason. Only the public headers are used, and the shared library is what is tested.

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

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

std::vector<std::vector<std::string>> ReadTable(const fs::path& path) {
    std::vector<std::vector<std::string>> rows;
    std::ifstream stream(path);
    for (std::string line; std::getline(stream, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream fields(line);
        auto& row = rows.emplace_back();
        for (std::string field; std::getline(fields, field, '\t');)
            row.push_back(field);
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

// What comes of an image instead of what its status asks for, in the words of Outcome.
std::map<ImageName, std::string> ReadExceptions() {
    enum Column { kPath, kImage, kOutcome, kReason, kColumns };
    std::map<ImageName, std::string> outcomes;
    for (const auto& row : ReadTable(VELLIM_SOURCE_DIR "/tests/corpus/exceptions.txt")) {
        EXPECT_EQ(row.size(), size_t{kColumns}) << row[kPath] << ": wants an outcome and a reason";
        const ImageName name(row.at(kPath), std::stoi(row.at(kImage)));
        EXPECT_TRUE(outcomes.emplace(name, row.at(kOutcome)).second) << row[kPath] << ": twice";
    }
    return outcomes;
}

// ---- One image, decoded. ----

using DigestContext = std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)>;

class Sha256 {
  public:
    Sha256() { EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr); }
    void Add(const uint8_t* bytes, size_t count) { EVP_DigestUpdate(context_.get(), bytes, count); }
    // The digest of what came so far, in hexadecimal.
    [[nodiscard]] std::string Digest() const {
        const DigestContext end(EVP_MD_CTX_new(), &EVP_MD_CTX_free);
        std::array<uint8_t, 32> digest{};
        EVP_MD_CTX_copy_ex(end.get(), context_.get());
        EVP_DigestFinal_ex(end.get(), digest.data(), nullptr);
        std::string text;
        for (const uint8_t byte : digest)
            for (const int digit : {byte >> 4, byte & 15})
                text += "0123456789abcdef"[digit];
        return text;
    }

  private:
    DigestContext context_{EVP_MD_CTX_new(), &EVP_MD_CTX_free};
};

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

// Nothing when the file can't be opened. An index of -1 stands for the first image.
std::optional<Decoded> Decode(const Expected& expected) {
    // Relative paths, since a path is limited to TIFF_PATH_BYTES.
    fs::current_path(CorpusFolder());
    const TiffFileHandle file = OpenTiffFile(expected.name.first.c_str(), T_READ);
    if (file == 0) {
        EXPECT_NE(TiffError(), 0) << "not opened, without a code";
        return std::nullopt;
    }
    const int image = expected.name.second < 0 ? 0 : expected.name.second;
    Decoded decoded = DecodeImage(file, image, expected.sha256);
    EXPECT_EQ(CloseTiffFile(file), 1);
    return decoded;
}

// ---- What each status asks for. ----

std::string Outcome(const std::optional<Decoded>& decoded) {
    if (!decoded) return "not opened";
    return "code " + std::to_string(decoded->code) + ", " + std::to_string(decoded->lines) +
           " of " + std::to_string(decoded->height) + " lines, digest " +
           decoded->hash.Digest().substr(0, 16);
}

bool IsAsExpected(const std::optional<Decoded>& decoded, const Expected& expected) {
    // libtiff decodes it whole.
    if (expected.status == "ok")
        return decoded && decoded->code == 0 && decoded->hash.Digest() == expected.sha256;
    // libtiff gives up somewhere: a failure, behind at least the lines that libtiff had.
    if (expected.status == "damaged") {
        return decoded ? decoded->code != 0 && decoded->sawWantedDigest
                       : expected.sha256 == Sha256().Digest();
    }
    // Tiles, planes, other depths or compressions, lines that aren't width x bits long: refused
    // before the first line.
    if (expected.status == "unsupported" || expected.status == "linesize")
        return !decoded || (decoded->code != 0 && decoded->lines == 0);
    // libtiff can't open it: what is asked for then stands in Decode and DecodeImage.
    EXPECT_EQ(expected.status, "open");
    return true;
}

TEST(Corpus, ImagesAreWhatLibtiffMakesOfThem) {
    if (!fs::exists(CorpusFolder() / "expected.tsv"))
        GTEST_SKIP() << "no corpus in " << CorpusFolder();
    auto exceptions = ReadExceptions();
    const auto images = ReadExpected();
    EXPECT_FALSE(images.empty());
    for (const Expected& expected : images) {
        SCOPED_TRACE(expected.name.first + ", image " + std::to_string(expected.name.second));
        const auto decoded = Decode(expected);
        const bool isAsExpected = IsAsExpected(decoded, expected);
        const auto exception = exceptions.extract(expected.name);
        if (exception.empty()) {
            EXPECT_TRUE(isAsExpected) << Outcome(decoded);
        } else {
            EXPECT_FALSE(isAsExpected) << "needs no exception";
            EXPECT_EQ(Outcome(decoded), exception.mapped()) << "not what exceptions.txt says";
        }
    }
    for (const auto& [name, outcome] : exceptions)
        ADD_FAILURE() << name.first << ": not in the corpus";
}

}  // namespace
}  // namespace vellim::test
