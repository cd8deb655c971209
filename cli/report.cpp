#include "report.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace {

// Paths are bytes; JSON is UTF-8. What is no UTF-8 is shown as a replacement character.
std::string dump(const nlohmann::ordered_json& value) {
    return value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace

void tell(std::string_view text) {
    std::cerr << "tvxconv: " << text << '\n';
}

std::string inQuotes(const std::string& name) {
    return dump(name);
}

bool printResult(const ConversionResult& result, bool json) {
    if (json) {
        nlohmann::ordered_json object;
        object["status"] = result.status;
        object["errorCode"] = result.errorCode;
        object["errorMessage"] = result.errorMessage;
        object["newProjectPath"] = result.newProjectPath;
        object["structure"] = nlohmann::ordered_json::array();
        for (int i = 0; i < result.structure.GetSize(); ++i) {
            object["structure"].push_back(result.structure[i].GetString());
        }
        std::cout << dump(object) << '\n';
    } else {
        for (int i = 0; i < result.structure.GetSize(); ++i) {
            std::cout << result.structure[i].GetString() << '\n';
        }
    }
    std::cout.flush();
    return std::cout.good();
}
