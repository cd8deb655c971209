// The command-line host: reads the command line and runs the command.

#include <exception>
#include <iostream>

#include "commandLine.h"
#include "draftelCommand.h"

int main(int argc, char** argv) {
    try {
        DraftelOptions options;
        int exitStatus = kConverted;
        if (!readCommandLine(argc, argv, options, exitStatus)) return exitStatus;
        return runDraftelCommand(options);
    } catch (const std::exception& error) {
        std::cerr << "tvxconv: " << error.what() << '\n';
        return kNotConverted;
    }
}
