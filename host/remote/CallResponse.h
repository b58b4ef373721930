#pragma once

#include <cstdint>
#include <memory>

#include "InvokerResponse.h"

namespace host {

class Peer;

// Sends the reply of one remote call to its client. Owner: the invoker. Thread: the loop's.
class CallResponse : public InvokerResponse {
 public:
  CallResponse(std::shared_ptr<Peer> peer, std::uint32_t id);

  const char* getCodecName() override;
  const char* getReplyAddress() override;
  void sendReply(const char* data, int length) override;

 private:
  const std::shared_ptr<Peer> m_peer;
  const std::uint32_t m_id;
  bool m_replied = false;
};

}  // namespace host
