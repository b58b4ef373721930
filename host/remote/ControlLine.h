#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string_view>

#include "remote/ControlChannel.h"
#include "remote/Frame.h"

namespace host {

class Peer;

// The control channel of one request of a connected client. While it lives, the connection of a
// client that has only shut down its sending side stays open. Owner, thread: as ControlChannel.
class ControlLine : public ControlChannel {
 public:
  ControlLine(std::shared_ptr<Peer> peer, std::uint32_t id);
  ~ControlLine() override;

  bool reply(std::string_view json) override;
  bool item(std::string_view json) override;
  void onGone(std::function<void()> gone) override;
  bool wanted() const override;
  void holdNext() override;
  [[nodiscard]] const std::string& origin() const override;

  // Replies, unless onGone was called: a stream ends with its connection.
  void answerAtEnd(std::string_view json);

  // The client has disconnected. Thread: the loop's.
  void tellGone();

 private:
  const std::shared_ptr<Peer> m_peer;
  const std::uint32_t m_id;
  std::atomic<bool> m_replied = false;
  bool m_holding = false;        // the loop's, until the end
  std::function<void()> m_gone;  // the loop's alone
};

}  // namespace host
