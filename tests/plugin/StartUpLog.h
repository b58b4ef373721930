#pragma once

#include <memory>
#include <string>

#include "framework/LogBook.h"
#include "plugin/Journal.h"

namespace plugin {

// The start-up's own lines, put between what is asked of the framework.
class StartUpLines final : public host::LogSink {
 public:
  explicit StartUpLines(Journal& journal) : m_journal(journal) {}
  void write(const host::LogEntry& entry) override {
    for (const char* const text : {"init: initial", "start NTP client",
                                   "NTP Client Thread has been", "Serious error", "Cannot find"})
      if (entry.text.rfind(text, 0) == 0)
        m_journal.add("log " + std::to_string(entry.level) + " " + entry.text);
  }

 private:
  Journal& m_journal;
};

class StartUpLog {
 public:
  explicit StartUpLog(Journal& journal) : m_sink(std::make_shared<StartUpLines>(journal)) {
    host::LogBook::instance().addSink(m_sink);
  }
  ~StartUpLog() { host::LogBook::instance().removeSink(m_sink); }
  StartUpLog(const StartUpLog&) = delete;
  StartUpLog& operator=(const StartUpLog&) = delete;

 private:
  std::shared_ptr<StartUpLines> m_sink;
};

}  // namespace plugin
