#include "commandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string_view>

#include "fsutil/paths.h"
#include "platform/platform.h"
#include "report.h"

namespace {

const std::string kDraftelExamples =
    "  tvxconv draftel designs/amp/amp.opj --to converted/amp\n"
    "  tvxconv draftel designs/amp/amp.opj --in-place --report structure.txt\n";
const std::string kTarnetExamples =
    "  tvxconv tarnet designs/library\n"
    "  tvxconv tarnet designs/library --report structure.txt\n";

std::string footer(const std::string& examples) {
    return "Example:\n" + examples +
           "\n"
           "The new structure goes to standard output, messages to standard error.\n"
           "Exit status: 0 converted, 1 not converted, 2 wrong command line.";
}

// Resolves "." and ".." in an absolute path, and links before them. A project names files by "../", which
// is resolved as text: it must remove the real name of a folder.
std::string withoutDots(const std::string& path) {
    std::size_t end = 0;  // of the last such component
    for (std::size_t begin = 0; begin < path.size();) {
        const std::size_t slash = std::min(path.find('/', begin), path.size());
        const std::string_view component = std::string_view(path).substr(begin, slash - begin);
        if (component == "." || component == "..") end = slash;
        begin = slash + 1;
    }
    if (end == 0) return path;
    std::error_code error;
    std::string folder = std::filesystem::weakly_canonical(path.substr(0, end), error).string();
    if (error) return path;
    if (folder == "/" && end != path.size()) folder.clear();
    return folder + path.substr(end);
}

std::string absolute(const std::string& argument) {
    std::string path;
    tvxconv::fsutil::toForwardSlashes(tvxconv::platform::absolutePath(argument), path);
    // Several slashes count as one, except for two at the beginning that name another machine.
    const auto network = path.begin() + (tvxconv::platform::hasDriveLetters() && !path.empty() ? 1 : 0);
    path.erase(std::unique(network, path.end(), [](char a, char b) { return a == '/' && b == '/'; }),
               path.end());
    if (path.size() > 1 && path.back() == '/') path.pop_back();
    return withoutDots(path);
}

// The options of both commands.
void addCommonOptions(CLI::App& command, const char* reportFolder, std::string& report, bool& json) {
    command
        .add_option("--report", report,
                    std::string("Write the new structure to the file NAME in the ") + reportFolder)
        ->type_name("NAME");
    command.add_flag("--json", json, "Print the result as one JSON object");
}

}  // namespace

bool readCommandLine(int argc, char** argv, std::variant<DraftelOptions, TarnetOptions>& command,
                     int& exitStatus) {
    CLI::App app("Moves the simulation files of design projects into the new layout.", "tvxconv");
    app.allow_windows_style_options(false);  // "/old/amp.opj" is a path on Windows, too
    app.set_version_flag("--version", std::string("tvxconv ") + TVXCONV_VERSION);
    app.footer(footer(kDraftelExamples + kTarnetExamples));
    app.require_subcommand(1);

    DraftelOptions draftelOptions;
    CLI::App* draftel = app.add_subcommand("draftel", "Convert a Draftel project");
    draftel->add_option("PROJECT.opj", draftelOptions.project, "The project file")->required();
    CLI::Option* to =
        draftel
            ->add_option("--to", draftelOptions.destination,
                         "Convert into the folder DIR, which is made if need be; the old files stay")
            ->type_name("DIR");
    CLI::Option* inPlace =
        draftel->add_flag("--in-place", draftelOptions.inPlace,
                          "Convert in the project's own folder; moved files leave their old place");
    to->excludes(inPlace);
    draftel->footer(footer(kDraftelExamples));
    addCommonOptions(*draftel, "destination", draftelOptions.report, draftelOptions.json);

    TarnetOptions tarnetOptions;
    CLI::App* tarnet = app.add_subcommand("tarnet", "Convert the cells of a Tarnet design library");
    tarnet
        ->add_option("LIBRARY_DIR", tarnetOptions.library,
                     "The library's folder; its cells get a new view, the old one stays")
        ->required();
    tarnet->footer(footer(kTarnetExamples));
    addCommonOptions(*tarnet, "library's folder", tarnetOptions.report, tarnetOptions.json);

    try {
        app.parse(argc, argv);
        if (draftel->parsed() && !draftelOptions.inPlace && draftelOptions.destination.empty()) {
            throw CLI::RequiredError("One of --to DIR and --in-place");
        }
        if (draftel->parsed() && draftelOptions.project.empty()) {
            throw CLI::ValidationError("PROJECT.opj", "the name is empty");
        }
        if (tarnet->parsed() && tarnetOptions.library.empty()) {
            throw CLI::ValidationError("LIBRARY_DIR", "the name is empty");
        }
    } catch (const CLI::ParseError& error) {
        exitStatus = app.exit(error, std::cout, std::cerr) == 0 ? kConverted : kWrongCommandLine;
        if (!std::cout.flush()) {
            tell("cannot write to standard output");
            exitStatus = kNotConverted;
        }
        return false;
    }
    if (tarnet->parsed()) {
        tarnetOptions.library = absolute(tarnetOptions.library);
        command = tarnetOptions;
        return true;
    }
    draftelOptions.project = absolute(draftelOptions.project);
    if (!draftelOptions.inPlace) draftelOptions.destination = absolute(draftelOptions.destination);
    command = draftelOptions;
    return true;
}
