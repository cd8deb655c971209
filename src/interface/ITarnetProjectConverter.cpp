#include "interface/ITarnetProjectConverter.h"

ITarnetProjectConverter::ITarnetProjectConverter() = default;
ITarnetProjectConverter::ITarnetProjectConverter(const ITarnetProjectConverter&) = default;
ITarnetProjectConverter& ITarnetProjectConverter::operator=(const ITarnetProjectConverter&) = default;
ITarnetProjectConverter::~ITarnetProjectConverter() = default;
