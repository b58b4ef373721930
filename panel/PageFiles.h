#pragma once

#include <string_view>

namespace panel {

// A file of the page, in the program: the panel serves no file of the machine.
struct PageFile {
  std::string_view path;     // "/index.html"
  std::string_view type;     // "text/html; charset=utf-8"
  std::string_view content;  // compressed by gzip, which every browser reads
};

[[nodiscard]] const PageFile* pageFile(std::string_view path);  // null: none

}  // namespace panel
