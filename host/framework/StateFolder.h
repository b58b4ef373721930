#pragma once

#include <functional>
#include <string>

namespace host {

// The folder of Storage's files. Empty, the default: Storage::init fails. Thread: any.
void setStorageFolder(const std::string& folder);
[[nodiscard]] std::string storageFolder();

// Called after Storage changed a file's content, on the thread that stored it. before: the old
// content; empty if there was none or it was too long for a script. There is one listener; an empty
// one removes it. It must not throw.
using StoredListener = std::function<void(const std::string& name, const std::string& before,
                                          const std::string& after)>;
void onStored(StoredListener listener);
void reportStored(const std::string& name, const std::string& before, const std::string& after);

}  // namespace host
