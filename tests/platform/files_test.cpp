// Files on the disk by their handles.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

#include "support/test_files.h"
#include "vellim/platform.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
  protected:
    std::string Path(const char* name) const { return (folder / name).string(); }
    std::string Make(const char* name, const char* content) const {
        std::ofstream(Path(name), std::ios::binary) << content;
        return Path(name);
    }

    fs::path folder = fs::canonical(NewFolder("files"));
};

int32_t Open(const std::string& path, uint32_t style) {
    return OpenFile(path.c_str(), nullptr, style);
}

TEST_F(Files, RoundTripAndThenTheHandleIsStale) {
    const int32_t made = Open(Path("a"), OF_CREATE);  // without a word on writing
    EXPECT_EQ(_lwrite(made, "0123456789", 10), 10);
    EXPECT_EQ(_llseek(made, 4, 0) + _lwrite(made, "xy", 2), 6);
    EXPECT_EQ(_lclose(made), 0);
    const int32_t file = _lopen(Path("a").c_str(), OF_READ);
    char bytes[20] = {};
    EXPECT_EQ(_lread(file, bytes, 20), 10) << "what is there";
    EXPECT_STREQ(bytes, "0123xy6789");
    EXPECT_EQ(_lwrite(file, "no", 2), -1) << "opened for reading";
    for (const int32_t none : {made, 0, 1, -1, INT32_MIN, INT32_MAX, file ^ 1}) {
        EXPECT_EQ(_lread(none, bytes, 1) + _lwrite(none, bytes, 1), -2) << none;
        EXPECT_EQ(_llseek(none, 0, 0) + _lclose(none), -2) << none;
    }
    EXPECT_EQ(_lclose(file), 0);
}

TEST_F(Files, OnlyCreatingMakesOrCuts) {
    const struct {
        uint32_t style;
        bool opens, opensMissing;
        const char* left;
    } cases[] = {{OF_READWRITE | OF_SHARE_DENY_READ, true, false, "content"},
                 {OF_EXIST | OF_CREATE | OF_WRITE, true, false, "content"},
                 {OF_CREATE | OF_READWRITE | OF_SHARE_DENY_READ, true, true, ""}};
    for (const auto& c : cases) {
        const std::string path = Make("old", "content");
        const int32_t file = Open(path, c.style);
        EXPECT_EQ(file > 0, c.opens) << c.style;
        EXPECT_EQ(_lclose(file), c.opens && (c.style & OF_EXIST) == 0 ? 0 : -1);
        EXPECT_EQ(ReadText(path), c.left) << c.style;
        fs::remove(path);
        _lclose(Open(path, c.style));
        EXPECT_EQ(fs::exists(path), c.opensMissing) << c.style;
    }
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    for (const uint32_t style : {OF_READ, OF_WRITE, OF_READWRITE, OF_CREATE, OF_EXIST})
        EXPECT_EQ(Open(folder.string(), style) + Open(Path("pipe"), style), -2) << "at once";
}

TEST_F(Files, FullPaths) {
    fs::create_directory(folder / "sub");
    Make("sub/file", "x");
    fs::create_symlink("sub/made", folder / "dangling");
    const struct {
        std::string given, full;
        uint32_t style;
        int reason;
    } cases[] = {{Path("sub/../sub/./file"), Path("sub/file"), OF_EXIST, 0},
                 {Path("dangling"), Path("sub/made"), OF_CREATE, 0},
                 {"no/such/folder", "no/such/folder", OF_READ, ENOENT},
                 {std::string(3UL * OFSTRUCT_PATH_BYTES, 'x'), "", OF_CREATE, ENAMETOOLONG}};
    for (const auto& c : cases) {
        OFSTRUCT info = {};
        EXPECT_EQ(OpenFile(c.given.c_str(), &info, c.style) > 0, c.reason == 0) << c.given;
        EXPECT_EQ(info.szPathName, c.full) << c.given;
        EXPECT_EQ(info.nErrCode, static_cast<uint32_t>(c.reason)) << c.given;
    }
}

TEST_F(Files, SeekLimits) {
    const std::string path = Make("long", "");
    fs::resize_file(path, uint64_t{INT32_MAX} + 1000);  // sparse
    const int32_t file = Open(path, OF_READ);
    const std::pair<int32_t, int32_t> refused[] = {
        {-1, 1}, {0, 2}, {-1, 0}, {0, 3}, {INT32_MIN, 1}};
    for (const auto& [offset, origin] : refused)
        EXPECT_EQ(_llseek(file, offset, origin), -1) << offset << ' ' << origin;
    EXPECT_EQ(_llseek(file, -1000, 2), INT32_MAX);
    char bytes[8];
    EXPECT_EQ(_lread(file, bytes, 8), 8);
    EXPECT_EQ(_llseek(file, 0, 1), -1);
    EXPECT_EQ(_llseek(file, -10, 1), INT32_MAX - 2) << "back within reach";
    _lclose(file);
}

TEST_F(Files, HoldOffASecondWriterMoveAndGo) {
    const std::string a = Make("a", "A"), b = Make("b", "B"), c = Path("c");
    const int32_t writer = Open(a, OF_READWRITE | OF_SHARE_DENY_READ);
    EXPECT_EQ(Open(a, OF_CREATE | OF_READWRITE | OF_SHARE_DENY_READ), -1);
    EXPECT_EQ(ReadText(a), "A") << "the refused writer cut nothing";
    EXPECT_EQ(_lclose(Open(a, OF_READ | OF_SHARE_EXCLUSIVE)), 0);
    EXPECT_EQ(_lclose(writer) + _lclose(Open(a, OF_WRITE | OF_SHARE_EXCLUSIVE)), 0);
    EXPECT_EQ(MoveFileA(a.c_str(), b.c_str()), 0) << "the target is there";
    EXPECT_EQ(ReadText(b), "B");
    EXPECT_EQ(MoveFileA(a.c_str(), c.c_str()), 1);
    EXPECT_EQ(DeleteFileA(b.c_str()), 1);
    EXPECT_EQ(DeleteFileA(b.c_str()) + DeleteFileA(folder.c_str()), 0);
}

}  // namespace
}  // namespace vellim::test
