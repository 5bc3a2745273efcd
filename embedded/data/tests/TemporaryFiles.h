#ifndef PREDSEL_EMBEDDED_DATA_TESTS_TEMPORARYFILES_H
#define PREDSEL_EMBEDDED_DATA_TESTS_TEMPORARYFILES_H

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace embedded {

/// A directory of its own with files in it, gone with the object.
class TemporaryFiles {
 public:
    TemporaryFiles() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "predselect-data-XXXXXX").string();
        fDirectory = mkdtemp(pattern.data());
    }
    ~TemporaryFiles() { std::filesystem::remove_all(fDirectory); }
    TemporaryFiles(const TemporaryFiles&) = delete;
    TemporaryFiles& operator=(const TemporaryFiles&) = delete;

    /// Writes a file and returns its path.
    std::string Write(const std::string& name, std::string_view bytes) const {
        const std::string path = Path(name);
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }
    std::string Path(const std::string& name) const { return (fDirectory / name).string(); }
    std::string Directory() const { return fDirectory.string(); }

 private:
    std::filesystem::path fDirectory;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_TESTS_TEMPORARYFILES_H
