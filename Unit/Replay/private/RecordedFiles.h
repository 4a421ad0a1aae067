/** @file
 * The files of a recorded run, on disk again for a while.
 */
#pragma once

#include "Unit/Configuration/UnitConfiguration.h"
#include "Unit/Recorder/RecordedRun.h"

#include <filesystem>
#include <string>
#include <vector>

/** Recorded files in a folder that only this user can enter; it goes with this. */
class RecordedFiles
{
public:
    /** @param sRecording for errors. @throws ConfigurationError, std::runtime_error */
    RecordedFiles(std::vector<RecordedFile> files, std::string sRecording);
    ~RecordedFiles();

    RecordedFiles(const RecordedFiles&) = delete;
    RecordedFiles& operator=(const RecordedFiles&) = delete;

    /** @return what the recorded unit file says, with the paths of the recorded files. @throws ConfigurationError */
    UnitConfiguration load() const;

    /** @return a text with the recorded names in place of the paths here */
    std::string withRecordedNames(std::string sText) const;

private:
    std::string pathOf(std::size_t nFile) const;
    std::string placeOf(const char* pKind, const std::string& sPath) const;

    std::vector<RecordedFile> m_files;
    std::string m_sRecording;
    std::filesystem::path m_folder;
};
