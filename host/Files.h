#ifndef PREDSEL_HOST_FILES_H
#define PREDSEL_HOST_FILES_H

#include <cstdint>
#include <fstream>
#include <string>

/// The folder for temporary files, with its trailing separator; empty when the system's own serves.
std::string GetKoltTempPath();

/// The application that runs the procedure, as the files it makes name it. UTF-8.
struct KoltAppParams {
    std::string fAppName;
    std::string fAppVersion;
    std::string fCopyright;
};
/// Never null; lives as long as the process.
const KoltAppParams* GetAppParams();

/// What Open opens a file for. Codes by the host's numbers.
inline constexpr std::int32_t kOpenForWriting = 2;

/// A file as the user named it. The host may write it under another name until the command has
/// ended well.
class ExtNameStr {
 public:
    /// The path as the user wrote it.
    void SetGeneric(const std::string& path) { fPath = path; }
    /// False, after a message of the host that names the file, when it cannot be opened.
    bool Open(std::ofstream& stream, std::int32_t mode) const;

 private:
    std::string fPath;
};

#endif  // PREDSEL_HOST_FILES_H
