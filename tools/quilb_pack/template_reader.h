#pragma once
// Finds the files that an install template (or a launcher's file list) names: the FN
// elements directly inside FileSet elements. The reading follows the engine's XML reader
// where it matters here: tag names are compared exactly, attribute names without regard
// to case, a raw '>' ends a tag even inside quotes, comments and other "<!" or "<?"
// forms are skipped, element text is trimmed and the five named entities are decoded.
#include <string>
#include <vector>

namespace quilbpack {

struct TemplateFile
{
    std::string text; // the FN text: the source path
    bool hasAlias = false;
    std::string alias; // the Alias attribute, when present
    bool okIfMissing = false;
};

// The FN entries of `xml` in document order. Never fails: what can't be read is skipped.
std::vector<TemplateFile> findTemplateFiles(const std::string& xml);

// The alias of a file without an Alias attribute: its source path with every '/', '\'
// and ':' taken out.
std::string derivedAlias(const std::string& sourcePath);

} // namespace quilbpack
