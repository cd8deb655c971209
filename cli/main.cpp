// The command-line host: reads the command line and runs the command.

#include <exception>
#include <iostream>
#include <variant>

#include "commandLine.h"
#include "draftelCommand.h"
#include "platform/platform.h"
#include "tarnetCommand.h"

int main(int argc, char** argv) {
    tvxconv::platform::keepNoFreeMemory();
    tvxconv::platform::keepGoingAtSizeLimit();
    try {
        std::variant<DraftelOptions, TarnetOptions> command;
        int exitStatus = kConverted;
        if (!readCommandLine(argc, argv, command, exitStatus)) return exitStatus;
        if (const auto* options = std::get_if<TarnetOptions>(&command)) return runTarnetCommand(*options);
        return runDraftelCommand(std::get<DraftelOptions>(command));
    } catch (const std::exception& error) {
        std::cerr << "tvxconv: " << error.what() << '\n';
        return kNotConverted;
    }
}
