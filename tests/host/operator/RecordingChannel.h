#pragma once

#include <functional>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "remote/ControlChannel.h"

namespace host {

// Records what is sent to a client. Thread: one.
class RecordingChannel : public ControlChannel {
 public:
  bool reply(std::string_view json) override {
    replies.emplace_back(json);
    return true;
  }
  bool item(std::string_view json) override {
    if (!memory) throw std::bad_alloc();
    if (reads) items.emplace_back(json);
    return reads;
  }
  void onGone(std::function<void()> gone) override { hangUp = std::move(gone); }

  bool wanted() const override { return isWanted; }
  bool hasRoom() const override { return room; }
  void holdNext() override { ++holds; }

  bool reads = true;
  bool room = true;
  bool memory = true;
  bool isWanted = true;
  int holds = 0;
  std::vector<std::string> replies;
  std::vector<std::string> items;
  std::function<void()> hangUp;
};

}  // namespace host
