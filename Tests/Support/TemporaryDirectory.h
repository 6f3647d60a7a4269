#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace velloren {

/// A fresh folder, removed with all it holds at the end.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        std::string name = (std::filesystem::temp_directory_path() / "velloren-XXXXXX").string();
        if (!::mkdtemp(name.data()))
            ADD_FAILURE() << "cannot make a folder like " << name;
        folder = name;
    }

    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    [[nodiscard]] const std::filesystem::path& path() const { return folder; }

    /// The path of something in the folder.
    [[nodiscard]] std::filesystem::path operator/(std::string_view name) const { return folder / name; }

  private:
    std::filesystem::path folder;
};

} // namespace velloren
