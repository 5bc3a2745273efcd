#ifndef PREDSEL_EMBEDDED_FILES_MODELFILES_H
#define PREDSEL_EMBEDDED_FILES_MODELFILES_H

#include <string>
#include <vector>

namespace embedded {

/// Files that come to their places only when all went well: until then they stand under temporary
/// names beside them, and what existed before stays.
class ModelFiles {
 public:
    ModelFiles() = default;
    /// Removes what was not put in its place.
    ~ModelFiles();
    ModelFiles(const ModelFiles&) = delete;
    ModelFiles& operator=(const ModelFiles&) = delete;

    /// Makes an empty temporary file and returns its path. Throws std::system_error.
    std::string Place(const std::string& path);
    /// Puts all in their places. Throws std::system_error.
    void Commit();

 private:
    struct Pending {
        std::string fPath;
        std::string fTemporary;
    };
    std::vector<Pending> fvPending;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_FILES_MODELFILES_H
