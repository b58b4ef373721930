#include "server/Feed.h"

#include <algorithm>

namespace panel {
namespace {

std::shared_ptr<const std::string> messageOf(const std::string& json) {
  return std::make_shared<const std::string>("data: " + json + "\n\n");
}

}  // namespace

void Feed::add(Page page) {
  send(std::make_shared<const std::string>(":\n\n"));  // a comment: finds the pages that are gone
  for (const auto& [name, state] : m_states) {
    if (!page(state.second)) return;
  }
  for (const Message& entry : m_entries) {
    if (!page(entry)) return;
  }
  if (page(messageOf(R"({"live":true})"))) m_pages.push_back(std::move(page));
}

void Feed::tellState(const std::string& name, const std::string& json) {
  auto& state = m_states[name];
  if (state.first == json) return;
  state = {json, messageOf(json)};
  send(state.second);
}

void Feed::tellEntries(const std::string& json) {
  const Message message = messageOf(json);
  m_entries.push_back(message);
  for (m_size += message->size(); m_size > kKept; m_entries.pop_front()) {
    m_size -= m_entries.front()->size();
  }
  send(message);
}

void Feed::send(const Message& message) {
  std::erase_if(m_pages, [&](const Page& page) { return !page(message); });
}

}  // namespace panel
