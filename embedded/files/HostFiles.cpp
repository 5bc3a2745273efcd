// Files and application of the running command.
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <string>
#include <system_error>

#include "embedded/HostSession.h"
#include "embedded/files/ModelFileFault.h"
#include "embedded/output/Report.h"
#include "host/Assertion.h"
#include "host/Files.h"
#include "host/Output.h"

namespace embedded {

void ReportModelFileFault(const std::string& path, const std::string& reason) {
    BpComposite text("Model file ^1 cannot be written, ^2...", true);
    text.Add(BpString(path, false));
    text.Add(BpString(reason, false));
    text.Finish();
    BpError(text, kBpErrorShow, kBpError);
}

}  // namespace embedded

std::string GetKoltTempPath() {
    std::string path = embedded::HostSession::Active().Options().fTempDir;
    if (path.empty()) {
        const char* folder = std::getenv("TMPDIR");
        path = folder == nullptr || *folder == '\0' ? "/tmp" : folder;
    }
    if (path.back() != '/') path += '/';
    return path;
}

const KoltAppParams* GetAppParams() {
    static const KoltAppParams params = {"predselect", PREDSELECT_VERSION,
                                         "Copyright (c) 2026 The predselect authors"};
    return &params;
}

bool ExtNameStr::Open(std::ofstream& stream, std::int32_t mode) const {
    PREDSEL_ASSERT(mode == kOpenForWriting, "mode == kOpenForWriting");
    embedded::HostSession& session = embedded::HostSession::Active();
    try {
        const std::string place = session.PlaceModelFile(fPath);
        errno = 0;
        stream.open(place, std::ios::binary | std::ios::trunc);
        if (!stream) throw std::system_error(errno, std::generic_category());
    } catch (const std::system_error& fault) {
        embedded::ReportModelFileFault(fPath, fault.code().message());
        return false;
    } catch (const std::exception& fault) {
        embedded::ReportModelFileFault(fPath, fault.what());
        return false;
    }
    session.Report().fModelFile = fPath;
    return true;
}
