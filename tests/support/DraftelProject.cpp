#include "support/DraftelProject.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "errors/errors.h"
#include "support/coverage.h"

namespace tests {

namespace fs = std::filesystem;

std::string projectText(const std::string& json) {
    return nlohmann::ordered_json::parse(json).dump(2) + "\n";
}

std::string smallProjectText() {
    return projectText(R"({
        "folders": [
            { "name": "Design Resources",
              "files": [ { "name": "amp.dsn", "path": ".\\amp.dsn", "type": "Schematic Design" } ] } ],
        "simulationProfiles": {
            "active": ".\\amp-S1-tran.sim",
            "profiles": [ { "path": ".\\amp-S1-tran.sim", "name": "tran", "schematic": "S1" } ] } })");
}

std::string smallProjectTextConverted() {
    return projectText(R"({
        "folders": [
            { "name": "Design Resources",
              "files": [ { "name": "amp.dsn", "path": ".\\amp.dsn", "type": "Schematic Design" } ],
              "items": { "TEVRIX_Output_File": "" } } ],
        "simulationProfiles": {
            "active": ".\\amp-tevrixfiles\\s1\\tran.sim",
            "profiles": [
                { "path": ".\\amp-tevrixfiles\\s1\\tran.sim", "name": "tran", "schematic": "S1" } ] } })");
}

Json folderOf(const std::string& name, const std::vector<Entry>& entries, const Json& subFolders) {
    Json files = Json::array();
    for (const Entry& entry : entries) {
        files.push_back({{"name", entry.path.substr(entry.path.find_last_of("/\\") + 1)},
                         {"path", entry.path},
                         {"type", entry.type}});
    }
    return {{"name", name}, {"files", files}, {"folders", subFolders}};
}

std::string ProjectJson::text() const {
    Json resources =
        folderOf("Design Resources", designResources, Json::array({folderOf("Library", libraries)}));
    resources["items"] = {{"TEVRIX_Output_File", item}};
    Json all = Json::array({resources});
    for (const Json& folder : folders) all.push_back(folder);
    Json registered = Json::array();
    for (const std::vector<std::string>& profile : profiles) {
        registered.push_back({{"path", profile[0]}, {"name", profile[1]}, {"schematic", profile[2]}});
    }
    const Json root = {{"folders", all},
                       {"simulationProfiles", {{"active", active}, {"profiles", registered}}}};
    return root.dump(2) + "\n";
}

std::string designText(const std::vector<std::string>& rootSchematics) {
    return nlohmann::json{{"rootSchematics", rootSchematics}}.dump() + "\n";
}

std::string profileText(const std::string& schematic, const std::string& profile) {
    return "ProfileName= \"" + profile + "\" \nRootSchematics= \"" + schematic + "\" \n";
}

std::string withLf(const std::string& text) {
    return replaced(text, "\r\n", "\n");
}

std::string withCrLf(const std::string& text) {
    return replaced(withLf(text), "\n", "\r\n");
}

std::string lowerCase(std::string text) {
    for (char& byte : text) byte = static_cast<char>(std::tolower(static_cast<unsigned char>(byte)));
    return text;
}

std::string withBackslashes(std::string text) {
    std::replace(text.begin(), text.end(), '/', '\\');
    return text;
}

std::ostream& operator<<(std::ostream& out, const LastError& error) {
    return out << error.code << " " << error.message;
}

LastError lastError() {
    LastError error;
    tvxconv::getLastErrorCode(error.code);
    tvxconv::getLastErrorMessage(error.message);
    return error;
}

void forgetLastError() {
    tvxconv::setLastErrorCode(0);
    tvxconv::setLastErrorMessage("");
}

LastError createDirectoryError(const std::string& path) {
    return {10102,
            "Failed to create directory \"" + path + "\". Check write permissions on the parent directory."};
}

LastError fileNotFoundError(const std::string& path) {
    return {10104, "File \"" + path + "\" does not exist."};
}

LastError openForReadingError(const std::string& path) {
    return {10105, "Failed to open file \"" + path +
                       "\" for reading. Check its access permissions and existence on the disk."};
}

LastError openForWritingError(const std::string& path) {
    return {10106, "Failed to open file \"" + path +
                       "\" for writing. Check disk space and write permissions on the parent directory."};
}

LastError deleteFileError(const std::string& path) {
    return {10107, "Failed to delete file \"" + path + "\"."};
}

LastError copyFileError(const std::string& source, const std::string& destination) {
    return {10108, "Failed to copy file \"" + source + "\" to file \"" + destination +
                       "\". Check disk space and access permissions."};
}

LastError readFileError(const std::string& path) {
    return {10109, "Failed to read file \"" + path + "\". Check the file syntax."};
}

LastError writeFileError(const std::string& path) {
    return {10110,
            "Failed to write to file \"" + path + "\". Check disk space and write permissions on the file."};
}

LastError readDesignFileError(const std::string& path) {
    return {10111, "Failed to read the design file \"" + path + "\"."};
}

Moves movesOf(tvxconv::ProjectConverter& converter) {
    Moves moves;
    std::string oldPath;
    std::string newPath;
    for (int end = converter.firstRelocation(oldPath, newPath); end == 0;
         end = converter.nextRelocation(oldPath, newPath)) {
        moves[oldPath] = newPath;
    }
    return moves;
}

DraftelProject::DraftelProject()
    : dir(folder.path("project")),
      destination(folder.path("new")),
      root(destination + "/amp-TevrixFiles"),
      schematicFolder(root + "/S1"),
      profileFolder(schematicFolder + "/tran"),
      converter((dir + "/amp.opj").c_str()) {
    write("amp.opj", smallProjectText());
    write("amp.dsn", designText({"S1"}));
    write("amp-S1-tran.sim", profileText("S1", "tran"));
    forgetLastError();
}

void DraftelProject::prepareSteps() {
    converter.setMode(2);
    converter.setProjectDir(dir);
    converter.setDestinationDir(destination);
    converter.setDesignName("amp");
    converter.setDesignFileBaseName("amp");
    converter.setDesignFilePath(dir + "/amp.dsn");
    converter.setDesignDir(dir);
    converter.classifySimulationFiles();
    fs::create_directories(profileFolder);
}

std::string DraftelProject::write(const std::string& name, const std::string& text) const {
    return folder.write("project/" + name, text);
}

std::string DraftelProject::read(const std::string& name) const {
    return folder.read("project/" + name);
}

void DraftelProject::remove(const std::string& name) const {
    EXPECT_TRUE(fs::remove(path(name))) << name;
}

std::string DraftelProject::readNew(const std::string& name) const {
    return folder.read("new/" + name);
}

bool DraftelProject::existsNew(const std::string& name) const {
    return folder.exists("new/" + name);
}

bool succeedsLacking(Lacks what, bool (*body)(void* context), void* context) {
    std::cout.flush();
    const pid_t child = fork();
    if (child == 0) {
        stopCoverage();
        const auto resource = what == Lacks::opening ? RLIMIT_NOFILE : RLIMIT_FSIZE;
        rlimit limit{};
        getrlimit(resource, &limit);
        const rlimit before = limit;
        limit.rlim_cur = 0;
        signal(SIGXFSZ, SIG_IGN);
        bool done = setrlimit(resource, &limit) == 0;
        done = done && body(context);
        std::cout.flush();
        if (setrlimit(resource, &before) == 0) writeCoverage();
        _exit(done && !testing::Test::HasFailure() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void openToAll(const std::string& folder) {
    constexpr auto kAll = fs::perms::all;
    fs::permissions(folder, kAll);
    for (const auto& entry : fs::recursive_directory_iterator(folder)) fs::permissions(entry.path(), kAll);
}

}  // namespace tests
