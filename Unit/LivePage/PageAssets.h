/** @file
 * The files of the live page.
 */
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>

/** A file of the page. */
struct PageAsset
{
    std::string sContentType;
    std::string sContent;
    std::string sTag; /**< changes when the content does */
};

/** The page's files by their path on the server. Any thread. */
class PageAssets
{
public:
    /** @return those that the program was built with; none when it was built without the page */
    static PageAssets embedded();

    /**
     * Reads the files from a folder each time that they are asked for, for work on the page.
     * @param sFolder has assets.txt, which names a path and a file on each line
     * @throws ConfigurationError when it has not
     */
    static PageAssets inFolder(const std::string& sFolder);

    bool isEmpty() const { return m_files.empty(); }
    bool has(const std::string& sPath) const { return m_files.contains(sPath); }

    /** @return nothing when there is no such path. @throws ConfigurationError when a file cannot be read */
    std::optional<PageAsset> find(const std::string& sPath) const;

private:
    std::map<std::string, std::function<std::string()>> m_files;
};
