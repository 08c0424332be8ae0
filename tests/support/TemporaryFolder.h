/// A folder for the files of one test.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orva::test {

/// Makes a folder of its own among the system's temporary ones, and removes it with all its files in the end.
class TemporaryFolder {
public:
    TemporaryFolder() {
        static std::atomic<int> made{0};
        const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
        constexpr int kAttempts = 1000;
        for (int attempt = 0; attempt < kAttempts; ++attempt) {
            folder = std::filesystem::temp_directory_path() /
                     ("orva-test-" + std::to_string(ticks) + "-" + std::to_string(made++));
            if (std::filesystem::create_directory(folder)) {
                return;
            }
        }
        throw std::runtime_error("no temporary folder could be made");
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// The folder's name, without what it lies in.
    std::string Name() const { return folder.filename().string(); }

    /// Full path of the file `name` in the folder.
    std::string Path(const std::string& name) const { return (folder / name).string(); }

    /// Writes a file; returns its full path.
    std::string Write(const std::string& name, std::string_view contents) const {
        std::ofstream(folder / name, std::ios::binary) << contents;
        return Path(name);
    }
    std::string Write(const std::string& name, const std::vector<std::uint8_t>& bytes) const {
        return Write(name, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }

private:
    std::filesystem::path folder;
};

/// All of a file; empty when it cannot be read.
inline std::string ReadWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

} // namespace orva::test
