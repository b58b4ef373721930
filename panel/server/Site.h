#pragma once

#include "server/Http.h"

namespace panel {

// What the panel serves. Thread: the server's; nothing blocks. Lives longer than the server.
class Site {
 public:
  virtual ~Site() = default;

  // Refuses a request before its body is read: empty, or the answer.
  [[nodiscard]] virtual std::optional<Response> refusal(const Request& head) = 0;

  // True for the stream of events, which the server then opens with this head.
  [[nodiscard]] virtual bool isFeed(const Request& request) const = 0;

  // Answers now or later.
  virtual void answer(const Request& request, Answer answer) = 0;

  // Adds a page that takes messages, until `take` returns false.
  using Take = std::function<bool(const std::shared_ptr<const std::string>& message)>;
  virtual void follow(Take take) = 0;

 protected:
  Site() = default;
  Site(const Site&) = delete;
  Site& operator=(const Site&) = delete;
};

}  // namespace panel
