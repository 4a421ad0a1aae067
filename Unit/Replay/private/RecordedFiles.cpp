#include "Unit/Replay/private/RecordedFiles.h"

#include "Platform/ConfigurationError.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>
#include <utility>

namespace
{
namespace fs = std::filesystem;

fs::path newFolder()
{
    std::string sTemplate = (fs::temp_directory_path() / "opc-replay-XXXXXX").string();
    if (mkdtemp(sTemplate.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), sTemplate);
    }
    return sTemplate;
}

void replaceAll(std::string& sText, const std::string& sOld, const std::string& sNew)
{
    for (std::size_t nAt = sText.find(sOld); nAt != std::string::npos; nAt = sText.find(sOld, nAt + sNew.size())) {
        sText.replace(nAt, sOld.size(), sNew);
    }
}
} // namespace

RecordedFiles::RecordedFiles(std::vector<RecordedFile> files, std::string sRecording)
    : m_files(std::move(files)), m_sRecording(std::move(sRecording))
{
    if (m_files.empty() || m_files.front().sKind != "unit") {
        throw ConfigurationError(
            fmt::format("{}: the run's unit file is not recorded; name another run", m_sRecording));
    }
    m_folder = newFolder();
    for (std::size_t nFile = 0; nFile < m_files.size(); ++nFile) {
        std::ofstream stream(pathOf(nFile), std::ios::binary);
        stream << m_files[nFile].sContent;
        stream.close();
        if (!stream) {
            throw std::runtime_error(fmt::format("{}: cannot be written; make room in the folder", pathOf(nFile)));
        }
    }
}

RecordedFiles::~RecordedFiles()
{
    std::error_code ignored;
    fs::remove_all(m_folder, ignored);
}

// The names may have folders in them, also ones above the unit file's.
std::string RecordedFiles::pathOf(std::size_t nFile) const
{
    return (m_folder / fmt::format("{:04}", nFile)).string();
}

UnitConfiguration RecordedFiles::load() const
{
    try {
        UnitConfiguration unit = loadUnitConfiguration(pathOf(0));
        if (!unit.sStorageFile.empty()) {
            unit.sStorageFile = placeOf("storage", unit.sStorageFile);
        }
        for (CalibrationConfiguration& calibration : unit.calibrations) {
            calibration.sFile = placeOf("calibration", calibration.sFile);
        }
        if (!unit.profile.sFile.empty()) {
            unit.profile.sFile = placeOf("profile", unit.profile.sFile);
        }
        unit.sPath = m_files.front().sName;
        unit.sFolder = fs::path(unit.sPath).parent_path().string(); // modules may be beside it
        return unit;
    }
    catch (const ConfigurationError& error) {
        throw ConfigurationError(withRecordedNames(error.what()));
    }
}

/** @param sPath as the unit file in the folder here has it: from this folder, or from the root */
std::string RecordedFiles::placeOf(const char* pKind, const std::string& sPath) const
{
    const std::string sHere = m_folder.string() + "/";
    const std::string sThere = fs::path(m_files.front().sName).parent_path().string() + "/";
    std::string sName = sPath.starts_with(sHere) ? sPath.substr(sHere.size()) : sPath;
    for (int nTry = 0; nTry < 2; ++nTry) {
        for (std::size_t nFile = 1; nFile < m_files.size(); ++nFile) {
            if (m_files[nFile].sKind == pKind && m_files[nFile].sName == sName) {
                return pathOf(nFile);
            }
        }
        sName = sName.starts_with(sThere) ? sName.substr(sThere.size())
                                          : sName; // recorded from the folder that it is named with
    }
    throw ConfigurationError(fmt::format("{}: the {} file {} of the run is not recorded", m_sRecording, pKind, sName));
}

std::string RecordedFiles::withRecordedNames(std::string sText) const
{
    for (std::size_t nFile = 0; nFile < m_files.size(); ++nFile) {
        replaceAll(sText, pathOf(nFile), fmt::format("{}: recorded file {}", m_sRecording, m_files[nFile].sName));
    }
    return sText;
}
