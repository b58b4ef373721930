#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "support/ManagedData.h"

namespace host {

// Records the calls that it gets, and answers them with `answer`.
class RecordingAgent final : public MgmtAgentIfc {
 public:
  bool setData(ManageableData& record) override {
    note("set", record);
    return answer();
  }
  bool getData(ManageableData& record) override {
    const bool found = answer();
    if (found) record.populate(record.getRootId(), valueOf(record.getRootId()));
    return found;
  }
  void manageableDataChanged(ManageableData& record) override {
    note("changed", record);
    answer();
    if (onChange) onChange(record);
  }
  bool resetUserData() override {
    notes.emplace_back("reset");
    return answer();
  }

  std::vector<std::string> notes;
  std::function<bool()> answer = [] { return true; };
  std::function<std::string(const std::string& key)> valueOf = [](const std::string& key) {
    return "value of " + key;
  };
  std::function<void(ManageableData&)> onChange;

 private:
  void note(const std::string& what, const ManageableData& record) {
    std::string value;
    EXPECT_TRUE(record.interogate(record.getRootId(), value));
    notes.push_back(what + " " + record.getRootId() + "=" + value);
  }
};

}  // namespace host
