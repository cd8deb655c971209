// Rewriting the advanced-analysis profile of a schematic, an attribute-list file: some sections name
// simulation profiles by their old profile files and get the new names.

#include "draftel/analysisProfile.h"

#include <utility>
#include <vector>

#include "attrlist/AttributeFile.h"
#include "draftel/DraftelProjectConverter.h"
#include "draftel/layout.h"
#include "errors/errors.h"
#include "fsutil/files.h"

namespace tvxconv {

using namespace draftel;

namespace {

using attrlist::Attribute;
using attrlist::AttributeFile;
using attrlist::AttributeNode;

// The keys of its attributes are names of profile files, without an extension.
constexpr const char* kProfiles = "Profiles";

// The sections whose measurements name their profile by its profile file.
constexpr const char* kAnalyses[] = {"Optimizer", "Sensitivity", "MonteCarlo"};
constexpr const char* kMeasurements = "MEASUREMENTS";
constexpr const char* kProfileOfMeasurement = "Profile";

// Reads `path` into an empty document.
bool readDocument(const std::string& path, AttributeFile& document) {
    const bool isRead =
        document.open(path.c_str()) == attrlist::kOpened && document.read() == attrlist::kRead;
    document.close();
    return isRead;
}

void renameProfiles(AttributeNode& section, const DraftelProjectConverter& converter) {
    std::vector<std::pair<std::string, std::string>> pairs;
    for (const Attribute* each = section.firstAttribute(); each != nullptr; each = section.nextAttribute()) {
        pairs.emplace_back(each->key(), each->value());
    }
    // All are added again, so that each keeps its place.
    section.removeAllAttributes();
    for (const auto& [key, value] : pairs) {
        std::string profile;
        std::string schematic;
        std::string registeredPath;
        const bool isKnown =
            !key.empty() && converter.findProfileRecord(key, profile, schematic, registeredPath) == 0;
        section.addAttribute(isKnown ? profile.c_str() : key.c_str(), value.c_str());
    }
}

void renameProfilesOfMeasurements(AttributeNode& analysis, const DraftelProjectConverter& converter) {
    AttributeNode* measurements = analysis.findChild(kMeasurements);
    if (measurements == nullptr) return;
    for (AttributeNode* each = measurements->firstChild(); each != nullptr;
         each = measurements->nextChild()) {
        const char* oldName = each->attributeValue(kProfileOfMeasurement);
        std::string newName;
        if (oldName == nullptr || converter.newProfileFileName(newName, oldName) != 0) continue;
        each->removeAttribute(kProfileOfMeasurement);
        each->addAttribute(kProfileOfMeasurement, newName.c_str());
    }
}

}  // namespace

bool canReadAnalysisProfile(const std::string& path) {
    AttributeFile document(AttributeFile::kAnalysisProfile);
    return readDocument(path, document);
}

int DraftelProjectConverter::relocateAnalysisProfile(std::string& newPath, const std::string& oldPath,
                                                     const std::string& schematic,
                                                     const std::string& schematicFolder,
                                                     const std::string& extension) {
    const std::string source = oldPath;
    const std::string target = schematicFolder + "/" + newSchematicFileName(schematic, extension);
    newPath = target;
    AttributeFile document(AttributeFile::kAnalysisProfile);
    if (!readDocument(source, document)) return 0;
    if (AttributeNode* section = document.findChild(kProfiles)) renameProfiles(*section, *this);
    for (const char* name : kAnalyses) {
        if (AttributeNode* analysis = document.findChild(name)) {
            renameProfilesOfMeasurements(*analysis, *this);
        }
    }
    // Writing through a link would change the old file itself.
    const bool isWritten = !fsutil::isSameFile(source, target) &&
                           document.write(target.c_str()) == attrlist::kWritten && document.isWrittenWhole();
    return isWritten ? 0 : reportError(ERR_WRITE_FILE, target);
}

}  // namespace tvxconv
