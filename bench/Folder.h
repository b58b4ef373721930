#pragma once

#include <filesystem>
#include <string>

namespace bench {

// A fresh folder, gone with all that is in it when the object goes.
// Failure: std::system_error from the constructor.
class Folder {
 public:
  // temporary: where socket names are short. disk: beside the programs, where writing is real.
  enum class Place { temporary, disk };

  explicit Folder(Place place = Place::temporary);
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return m_path; }
  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
    return m_path / name;
  }

 private:
  std::filesystem::path m_path;
};

}  // namespace bench
