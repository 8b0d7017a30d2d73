#pragma once
// A fixed text field of a system structure, read up to its terminator or
// its end: a field filled to the last element has none.

#include <algorithm>
#include <cstddef>
#include <string>

namespace connectkit::win {

template <typename Char, size_t N>
std::basic_string<Char> FieldText(const Char (&field)[N]) {
    return std::basic_string<Char>(field, std::find(field, field + N, Char{}));
}

}  // namespace connectkit::win
