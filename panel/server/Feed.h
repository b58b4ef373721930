#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace panel {

// What the pages are told, as server-sent events (HTML Standard, 9.2): the latest state of each
// name, and the newest entries of the journal, which a page that comes later gets first, up to a
// message {"live":true}. Owner: the panel. Thread: the server's.
class Feed {
 public:
  static constexpr std::size_t kKept = std::size_t{512} << 10;  // bytes of the journal

  // Takes one message as it is sent. False: the page is gone or does not read.
  using Page = std::function<bool(const std::shared_ptr<const std::string>& message)>;

  void add(Page page);
  [[nodiscard]] std::size_t pages() const { return m_pages.size(); }

  // json: on one line. Replaces the earlier state of that name.
  void tellState(const std::string& name, const std::string& json);
  void tellEntries(const std::string& json);

 private:
  using Message = std::shared_ptr<const std::string>;

  void send(const Message& message);

  std::map<std::string, std::pair<std::string, Message>> m_states;  // by name: JSON, message
  std::deque<Message> m_entries;
  std::size_t m_size = 0;  // of them, in bytes
  std::vector<Page> m_pages;
};

}  // namespace panel
