// TarnetProjectConverter.h
//
// The converter behind ITarnetProjectConverter. It knows its library and answers the questions that a
// host may ask before a conversion; the conversion itself is not there yet, and convert says so with a
// status.

#pragma once

#include <string>
#include <vector>

#include "converter/ProjectConverter.h"
#include "interface/ITarnetProjectConverter.h"

namespace tvxconv {

class TarnetProjectConverter : public ITarnetProjectConverter, public ProjectConverter {
public:
    // `libraryPath` is the absolute path of the design library's folder; null leaves it unset.
    explicit TarnetProjectConverter(const char* libraryPath);
    ~TarnetProjectConverter() override = default;

    // Touches nothing and returns 1.
    int convert(int mode, const std::string& path) override;
    int getLibraryParentName(std::string& name) override;
    int getNewStructure(std::vector<std::string>& lines) override;
    int writeReport(const std::vector<std::string>& lines, const std::string& reportName) override;
    int getLastErrorCode(int& code) override;
    int getLastErrorMessage(std::string& message) override;

private:
    std::string libraryParentName_;  // known after a conversion
};

}  // namespace tvxconv
