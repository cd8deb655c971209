// The operations of IDraftelProjectConverter: they convert the host's strings, call the converter's
// operation, and convert the result back.

#include <utility>

#include "converter/guarded.h"
#include "draftel/DraftelProjectConverter.h"
#include "interface/IDraftelProjectConverter.h"

namespace tvxconv {
namespace {

std::string textOf(const CString& text) {
    return std::string(text.GetString(), static_cast<std::size_t>(text.GetLength()));
}

CString hostString(const std::string& text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

}  // namespace

int DraftelProjectConverter::convert(int mode, const CString& path) {
    return guarded([&] { return convert(mode, textOf(path)); });
}

int DraftelProjectConverter::getNewStructure(CStringArray& lines) {
    return guarded([&] {
        std::vector<std::string> listing;
        const int status = getNewStructure(listing);
        if (status != 0) return status;
        for (std::string& line : listing) {
            const std::string text = std::move(line);  // leaves one list before it enters the other
            if (!text.empty()) lines.SetAtGrow(lines.GetSize(), hostString(text));
        }
        return 0;
    });
}

int DraftelProjectConverter::writeReport(const CStringArray& lines, const CString& reportPath) {
    return guarded([&] {
        std::vector<std::string> report;
        for (int i = 0; i < lines.GetSize(); ++i) {
            if (!lines.GetAt(i).IsEmpty()) report.push_back(textOf(lines.GetAt(i)));
        }
        return writeReport(report, textOf(reportPath));
    });
}

int DraftelProjectConverter::getNewProjectPath(CString& path) {
    return guarded([&] {
        std::string text;
        const int status = ProjectConverter::getNewProjectPath(text);
        if (status == 0 && !text.empty()) path = hostString(text);
        return status;
    });
}

int DraftelProjectConverter::getLastErrorMessage(CString& message) {
    return guarded([&] {
        std::string text;
        const int status = getLastErrorMessage(text);
        if (status == 0 && !text.empty()) message = hostString(text);
        return status;
    });
}

}  // namespace tvxconv

extern "C" IDraftelProjectConverter* createDraftelProjectConverter(const CString* projectPath) {
    try {
        return new tvxconv::DraftelProjectConverter(projectPath != nullptr ? projectPath->GetString()
                                                                           : nullptr);
    } catch (...) {
        return nullptr;
    }
}
