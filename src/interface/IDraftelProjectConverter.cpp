#include "interface/IDraftelProjectConverter.h"

IDraftelProjectConverter::IDraftelProjectConverter() = default;
IDraftelProjectConverter::IDraftelProjectConverter(const IDraftelProjectConverter&) = default;
IDraftelProjectConverter& IDraftelProjectConverter::operator=(const IDraftelProjectConverter&) = default;
IDraftelProjectConverter::~IDraftelProjectConverter() = default;
