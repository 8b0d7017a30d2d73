#pragma once
// Small text helpers for the simulated PC's Windows-style names and paths.

#include <string>
#include <vector>

namespace connectkit::sim {

std::wstring Lower(const std::wstring& text);
// Splits at backslashes and slashes, dropping empty parts.
std::vector<std::wstring> SplitPath(const std::wstring& path);
// Lower case with backslashes: the form paths are compared in.
std::wstring NormalPath(const std::wstring& path);

}  // namespace connectkit::sim
