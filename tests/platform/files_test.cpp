// Files on the disk by their handles.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "vellim/platform.h"

namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
  protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "platform_filesXXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder = fs::canonical(name);
    }
    void TearDown() override { fs::remove_all(folder); }

    std::string Path(const char* name) const { return (folder / name).string(); }
    std::string Make(const char* name, const char* content) const {
        std::ofstream(Path(name), std::ios::binary) << content;
        return Path(name);
    }

    fs::path folder;
};

std::string Content(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

int32_t Open(const std::string& path, uint32_t style) {
    return OpenFile(path.c_str(), nullptr, style);
}

TEST_F(Files, RoundTrip) {
    const int32_t made = Open(Path("a"), OF_CREATE);  // without a word on writing
    ASSERT_GT(made, 0);
    EXPECT_EQ(_lwrite(made, "0123456789", 10), 10);
    EXPECT_EQ(_llseek(made, 4, 0), 4);
    EXPECT_EQ(_lwrite(made, "xy", 2), 2);
    EXPECT_EQ(_lclose(made), 0);
    const int32_t file = _lopen(Path("a").c_str(), OF_READ);
    char bytes[20] = {};
    EXPECT_EQ(_lread(file, bytes, 3), 3);
    EXPECT_EQ(_lread(file, bytes + 3, 17), 7) << "what is left";
    EXPECT_STREQ(bytes, "0123xy6789");
    EXPECT_EQ(_lread(file, bytes, 1), 0) << "at the end";
    EXPECT_EQ(_lwrite(file, "no", 2), -1) << "opened for reading";
    EXPECT_EQ(_lread(file, nullptr, 2), -1);
    EXPECT_EQ(_lclose(file), 0);
}

TEST_F(Files, OnlyCreatingMakesOrCuts) {
    const struct {
        uint32_t style;
        bool opens, opensMissing;
        const char* left;
    } cases[] = {{OF_READWRITE | OF_SHARE_DENY_READ, true, false, "content"},
                 {OF_EXIST | OF_CREATE | OF_WRITE, true, false, "content"},
                 {OF_CREATE | OF_READWRITE | OF_SHARE_DENY_READ, true, true, ""},
                 {OF_READ | 3U, false, false, "content"}};
    const auto descriptors = [] {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
    };
    for (const auto& c : cases) {
        const std::string path = Make("old", "content");
        const auto before = descriptors();
        const int32_t file = Open(path, c.style);
        EXPECT_EQ(file > 0, c.opens) << c.style;
        EXPECT_EQ(_lclose(file), c.opens && (c.style & OF_EXIST) == 0 ? 0 : -1);
        EXPECT_EQ(descriptors(), before);
        EXPECT_EQ(Content(path), c.left) << c.style;
        fs::remove(path);
        _lclose(Open(path, c.style));
        EXPECT_EQ(fs::exists(path), c.opensMissing) << c.style;
    }
}

TEST_F(Files, FullPaths) {
    fs::create_directory(folder / "sub");
    const std::string target = Make("sub/file", "x");
    fs::create_symlink("sub/file", folder / "link");
    fs::create_symlink("sub/made", folder / "dangling");
    const struct {
        std::string given, full;
        uint32_t style;
        int reason;
    } cases[] = {{"sub/../sub/./file", target, OF_EXIST, 0},
                 {"link", target, OF_READ, 0},
                 {"new", Path("new"), OF_CREATE, 0},
                 {"dangling", Path("sub/made"), OF_CREATE, 0},
                 {"sub/gone", Path("sub/gone"), OF_READ, ENOENT},
                 {"/no-such-file-here", "/no-such-file-here", OF_READ, ENOENT},
                 {"no/such/folder", "no/such/folder", OF_READ, ENOENT},
                 {"", "", OF_READ, ENOENT},
                 {std::string(3UL * OFSTRUCT_PATH_BYTES, 'x'), "", OF_CREATE, ENAMETOOLONG}};
    const fs::path before = fs::current_path();
    fs::current_path(folder);
    for (const auto& c : cases) {
        OFSTRUCT info = {};
        const int32_t file = OpenFile(c.given.c_str(), &info, c.style);
        EXPECT_EQ(info.szPathName, c.full) << c.given;
        EXPECT_EQ(info.nErrCode, static_cast<uint32_t>(c.reason)) << c.given;
        EXPECT_EQ(file > 0, c.reason == 0) << c.given;
        _lclose(file);
    }
    fs::current_path(before);
    EXPECT_EQ(OpenFile(nullptr, nullptr, OF_READ), -1);
}

TEST_F(Files, FoldersAndPipesAreRefusedAtOnce) {
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    for (const uint32_t style : {0x0U, 0x1U, 0x2U, 0x1000U, 0x4000U})
        EXPECT_EQ(Open(folder.string(), style) + Open(Path("pipe"), style), -2) << style;
    const int32_t sink = Open("/dev/null", OF_CREATE | OF_WRITE);
    EXPECT_EQ(_lwrite(sink, "gone", 4), 4);
    EXPECT_EQ(_lclose(sink), 0);
}

TEST_F(Files, SeekLimits) {
    const std::string path = Make("long", "");
    fs::resize_file(path, uint64_t{INT32_MAX} + 1000);  // sparse
    const int32_t file = Open(path, OF_READ);
    EXPECT_EQ(_llseek(file, 50, 0), 50);
    const std::pair<int32_t, int32_t> refused[] = {{-51, 1}, {0, 2}, {INT32_MAX, 1},
                                                   {-1, 0},  {0, 3}, {INT32_MIN, 1}};
    for (const auto& [offset, origin] : refused) {
        EXPECT_EQ(_llseek(file, offset, origin), -1) << offset << ' ' << origin;
        EXPECT_EQ(_llseek(file, 0, 1), 50) << "kept";
    }
    EXPECT_EQ(_llseek(file, -1000, 2), INT32_MAX);
    char bytes[8] = {};
    EXPECT_EQ(_lread(file, bytes, sizeof bytes), 8);
    EXPECT_EQ(_llseek(file, 0, 1), -1);
    EXPECT_EQ(_llseek(file, -10, 1), INT32_MAX - 2) << "back within reach";
    _lclose(file);
}

TEST_F(Files, StaleAndForeignHandlesFail) {
    const std::string path = Make("a", "content");
    const int kept = dup(STDIN_FILENO);
    close(STDIN_FILENO);  // so that the next file is descriptor 0
    const int32_t stale = Open(path, OF_READ);
    ASSERT_GT(stale, 0);
    ASSERT_EQ(_lclose(stale), 0);
    const int32_t file = Open(path, OF_READ);
    char byte = 0;
    for (const int32_t none : {stale, 0, 1, 2, -1, -2, INT32_MIN, INT32_MAX, file ^ 1}) {
        EXPECT_EQ(_lread(none, &byte, 1) + _lwrite(none, &byte, 1), -2) << none;
        EXPECT_EQ(_llseek(none, 0, 0) + _lclose(none), -2) << none;
    }
    EXPECT_EQ(_lread(file, &byte, 1), 1);
    EXPECT_EQ(byte, 'c');
    EXPECT_EQ(_lclose(file), 0);
    if (kept >= 0) dup2(kept, STDIN_FILENO);
    close(kept);
}

TEST_F(Files, HoldOffASecondWriterMoveAndGo) {
    const std::string path = Make("w", "content");
    const int32_t writer = Open(path, OF_READWRITE | OF_SHARE_DENY_READ);
    EXPECT_EQ(Open(path, OF_CREATE | OF_READWRITE | OF_SHARE_DENY_READ), -1);
    EXPECT_EQ(Content(path), "content") << "the refused writer cut nothing";
    EXPECT_EQ(_lclose(Open(path, OF_READ | OF_SHARE_EXCLUSIVE)), 0);
    EXPECT_EQ(_lclose(Open(path, OF_READWRITE)), 0);
    EXPECT_EQ(_lclose(writer), 0);
    EXPECT_EQ(_lclose(Open(path, OF_WRITE | OF_SHARE_EXCLUSIVE)), 0);

    const std::string a = Make("a", "A"), b = Make("b", "B"), c = Path("c");
    EXPECT_EQ(MoveFileA(a.c_str(), b.c_str()), 0) << "the target is there";
    EXPECT_EQ(Content(b), "B");
    EXPECT_EQ(MoveFileA(a.c_str(), c.c_str()), 1);
    EXPECT_EQ(Content(c), "A");
    EXPECT_EQ(MoveFileA(a.c_str(), Path("d").c_str()), 0) << "nothing to move";
    EXPECT_EQ(DeleteFileA(b.c_str()), 1);
    EXPECT_EQ(DeleteFileA(b.c_str()) + DeleteFileA(folder.c_str()), 0);
}

TEST_F(Files, HandleCountRaisesTheSoftLimit) {
    rlimit before = {}, now = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit low = {40, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &low), 0);
    EXPECT_EQ(SetHandleCount(20), 40) << "never lowered";
    EXPECT_EQ(SetHandleCount(60), 60);
    getrlimit(RLIMIT_NOFILE, &now);
    EXPECT_EQ(now.rlim_cur, 60U);
    setrlimit(RLIMIT_NOFILE, &before);
}

}  // namespace
