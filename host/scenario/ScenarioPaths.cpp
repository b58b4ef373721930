#include "scenario/ScenarioPaths.h"

#include "base/PrintableText.h"
#include "verbs/UsageError.h"

namespace host {

void requireDevicePath(const std::string& path) {
  const bool inside = path.starts_with("/data/") || path.starts_with("/tmp/votk/");
  if (!inside || path.ends_with('/') || path.find("/..") != std::string::npos) {
    throw UsageError(quotedText(path) +
                     " is not a file of the device; write a path below /data/ or /tmp/votk/");
  }
}

void requireDevicePathOrStorageName(const std::string& path) {
  const bool name = !path.empty() && path.find('/') == std::string::npos && path != "..";
  if (!name) requireDevicePath(path);
}

}  // namespace host
