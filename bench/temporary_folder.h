// A folder for files that a case makes, gone with it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

namespace vellim::bench {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name =
            (std::filesystem::temp_directory_path() / "vellim-bench-XXXXXX").string();
        path_ = mkdtemp(name.data()) == nullptr ? std::string() : name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    [[nodiscard]] std::string File(const char* name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

}  // namespace vellim::bench
