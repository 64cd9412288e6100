// Putting a new file in an old one's place.
#include "platform/files/file_replacement.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "support/test_files.h"
#include "vellim/platform.h"

namespace vellim::test {
namespace {

namespace fs = std::filesystem;

class Replacement : public testing::Test {
  protected:
    void SetUp() override { std::ofstream(Path("old")) << "old"; }

    std::string Path(const char* name) const { return (folder / name).string(); }
    std::string Content(const char* name) const { return ReadText(Path(name)); }
    int32_t Create(const char* name) const {
        return CreateReplacement(Path("old").c_str(), Path(name).c_str());
    }
    [[nodiscard]] bool Commit(int32_t file) const {
        return CommitReplacement(file, Path("new").c_str(), Path("old").c_str());
    }

    fs::path folder = NewFolder("replaced");
};

TEST_F(Replacement, TakesNameAndModeInOneStep) {
    fs::permissions(folder / "old", fs::perms{0604});
    std::ofstream(Path("new")) << "left behind by an earlier attempt";
    const int32_t file = Create("new");
    EXPECT_EQ(Create("new"), -1) << "locked";
    EXPECT_EQ(fs::status(folder / "new").permissions(), fs::perms{0600}) << "while unfinished";
    EXPECT_EQ(_lwrite(file, "new", 3), 3);
    EXPECT_EQ(Content("old"), "old");
    EXPECT_TRUE(Commit(file));
    EXPECT_FALSE(Commit(file)) << "the name is no longer its own";
    EXPECT_EQ(Content("old"), "new");
    EXPECT_EQ(fs::status(folder / "old").permissions(), fs::perms{0604});
    EXPECT_FALSE(fs::exists(folder / "new"));
    EXPECT_EQ(_lclose(file) + _lclose(Create("new")), 0);
}

TEST_F(Replacement, TouchesNothingElse) {
    fs::create_hard_link(folder / "old", folder / "hard");
    fs::create_symlink("old", folder / "soft");
    fs::create_directory(folder / "sub");
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    for (const char* name : {"old", "hard", "soft", "sub", "pipe", "no/such"})
        EXPECT_EQ(Create(name), -1) << name;
    EXPECT_EQ(Content("old"), "old");
    EXPECT_TRUE(SameFile(Path("soft").c_str(), Path("hard").c_str()));
    const int32_t file = Create("new");
    fs::rename(folder / "new", folder / "moved");
    std::ofstream(Path("new")) << "somebody else's";
    EXPECT_FALSE(Commit(file));
    EXPECT_EQ(Content("old"), "old");
    _lclose(file);
}

// Processes that replace one file by a longer one as often as they get the name: none may empty or
// shorten what another has put in place.
TEST_F(Replacement, NeverHarmsWhatAnotherJustPutInPlace) {
    constexpr int kProcesses = 4, kRounds = 50;
    for (int process = 0; process < kProcesses; process++) {
        if (fork() != 0) continue;
        for (int done = 0; done < kRounds;) {
            const int32_t file = Create("new");
            if (file == -1) continue;
            const std::string longer = Content("old") + '.';
            _lwrite(file, longer.data(), static_cast<uint32_t>(longer.size()));
            if (Commit(file)) done++;
            _lclose(file);
        }
        _exit(0);
    }
    while (wait(nullptr) > 0) {
    }
    EXPECT_EQ(Content("old").size(), 3U + kProcesses * kRounds);
}

}  // namespace
}  // namespace vellim::test
