#include "fuzz/driver/Material.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "foundation/StringUtils.h"

namespace fuzz {
namespace {

using Files = std::vector<std::filesystem::path>;

Files FilesOf_(const char* folder) {
    const std::filesystem::path path = std::filesystem::path(PROJECT_FOLDER) / folder;
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        files.push_back(entry.path());
    }
    if (files.empty()) {
        throw std::runtime_error("there is no corpus in " + path.string());
    }
    std::ranges::sort(files);
    return files;
}

std::string Read_(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

Units FromUtf16_(const std::string& bytes) {
    Units units(bytes.size() / sizeof(wchar_t), L'\0');
    bytes.copy(reinterpret_cast<char*>(units.data()), units.size() * sizeof(wchar_t));
    return units;
}

Units FromBytes_(const std::string& bytes) {
    Units units;
    for (const char byte : bytes) {
        units.push_back(static_cast<unsigned char>(byte));
    }
    return units;
}

} // namespace

std::vector<Units> ReadCorpus(const char* folder) {
    std::vector<Units> corpus;
    for (const auto& file : FilesOf_(folder)) {
        const std::string bytes = Read_(file);
        const bool isUtf16 = file.extension() == ".bin";
        corpus.push_back(isUtf16 ? FromUtf16_(bytes) : vorlek::StringUtils::FromUtf8(bytes));
    }
    return corpus;
}

std::vector<Units> ReadByteCorpus(const char* folder) {
    std::vector<Units> corpus;
    for (const auto& file : FilesOf_(folder)) {
        corpus.push_back(FromBytes_(Read_(file)));
    }
    return corpus;
}

std::string ToBytes(UnitsView units) {
    std::string bytes;
    bytes.reserve(units.size());
    for (const wchar_t unit : units) {
        bytes.push_back(static_cast<char>(unit));
    }
    return bytes;
}

void AddTokens(Material& material, UnitsView list) {
    constexpr UnitsView separator = L" | ";
    for (std::size_t begin = 0; begin <= list.size();) {
        const std::size_t end = std::min(list.find(separator, begin), list.size());
        material.tokens.emplace_back(list.substr(begin, end - begin));
        begin = end + separator.size();
    }
}

Material XmlMaterial(const char* folder) {
    Material material = {.corpus = ReadCorpus(folder), .boundaries = L"<>\"= \n"};
    AddTokens(material, L"< | > | </ | /> | =\" | \" | ' | & | ; | a: | <a> | </a> | <a/> |  a=\"b\" |  xmlns:a=\"b\"");
    AddTokens(material, L"<!-- | --> | <![CDATA[ | ]]> | <? | ?> | <!DOCTYPE a [<!ENTITY b \"c\">]> | "
                        L"<!DOCTYPE a SYSTEM \"file:///c:/boot.ini\"> | <?xml version=\"1.0\"?> | "
                        L"<?xml version=\"1.0\" encoding=\"utf-16\"?> | "
                        L"<?xml version=\"1.0\" encoding=\"ISO-8859-1\" standalone='yes'?>");
    AddTokens(material, L"&amp; | &lt; | &quot; | &apos; | &b; | &#0; | &#10; | &#13; | &#x20; | &#x | &#xD800; | "
                        L"&#xFFFF; | &#x10FFFF; | &#x110000; | &#99999999999999999999;");
    AddTokens(material, L"\xFEFF | \xFFFE | \xFEFF\xFEFF | \xD83D\xDE00 | \xD83D | \xDE00");
    material.tokens.emplace_back(1, L'\0');
    return material;
}

} // namespace fuzz
