#pragma once
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace fuzz {

/// Longest input of any target. A text of elements alone takes the guard heap five blocks for each, of which a process
/// can have some 30,000.
constexpr std::size_t kMaxUnits = 16384;

/// A text of units: UTF-16 code units, or bytes, one each.
using Units = std::wstring;
using UnitsView = std::wstring_view;

/// What the inputs of a target are made from.
struct Material {
    /// Good examples, run as they are before anything is made from them.
    std::vector<Units> corpus;
    /// What means something to the target.
    std::vector<Units> tokens = {};
    /// The units at which a part of an input begins or ends.
    Units boundaries = {};
    /// Highest value of a unit: 0xFF for bytes, 0xFFFF for code units.
    wchar_t highest = 0xFFFF;
    /// Longest input, in units.
    std::size_t most = kMaxUnits;
};

/// The files of a folder of fuzz/corpus, in order of their names: texts in UTF-8, or, if the name ends in ".bin",
/// UTF-16 as it stands. Throws std::runtime_error without any.
std::vector<Units> ReadCorpus(const char* folder);
/// The same as bytes, one in each unit.
std::vector<Units> ReadByteCorpus(const char* folder);

/// The bytes that the units hold.
std::string ToBytes(UnitsView units);

/// Adds the tokens of a list, which " | " parts.
void AddTokens(Material& material, UnitsView list);

/// For texts in XML: the corpus of that folder, and what begins, ends, declares, refers to and upsets XML.
Material XmlMaterial(const char* folder);

} // namespace fuzz
