// A host in the fewest lines: asks for the conversion of a project and says how it ended.
//
//   consumer PROJECT.opj DIR

#include <cstdio>
#include <memory>

#include "interface/IDraftelProjectConverter.h"

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const CString project(argv[1]);
    const std::unique_ptr<IDraftelProjectConverter> converter(createDraftelProjectConverter(&project));
    if (converter == nullptr) return 1;

    const int status = converter->convert(2, CString(argv[2]));
    int code = -1;
    converter->getLastErrorCode(code);
    CString message;
    converter->getLastErrorMessage(message);
    std::printf("status %d\ncode %d\nmessage %s\n", status, code, message.GetString());
    return 0;
}
