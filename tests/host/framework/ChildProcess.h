#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "Process.h"
#include "framework/ProgramMap.h"
#include "support/TemporaryFolder.h"

using Texts = std::vector<std::string>;

inline std::vector<char*> pointersTo(Texts& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// Starts shells that write into a named pipe. The pipe ends when its last writer has ended.
class ChildProcess : public testing::Test {
 protected:
  ChildProcess() {
    host::ProgramMap::instance().allowDevicePrograms();
    EXPECT_EQ(mkfifo(pipePath().c_str(), 0600), 0);
  }
  ~ChildProcess() override { host::ProgramMap::instance().clear(); }

  std::unique_ptr<Process> process(Texts arguments, Texts environment = {},
                                   int options = Process::ownProcessGroup,
                                   const char* folder = nullptr) const {
    const std::vector<char*> words = pointersTo(arguments);
    const std::vector<char*> variables = pointersTo(environment);
    return std::make_unique<Process>(options, words.data(), variables.data(), folder);
  }

  // A shell that runs the script with its output going into the pipe.
  std::unique_ptr<Process> shell(const std::string& script, Texts environment = {},
                                 int options = Process::ownProcessGroup,
                                 const char* folder = nullptr) const {
    return process(
        {"/bin/sh", "-c", "exec >'" + pipePath() + "'; " + script, "name", "one", "t w o"},
        std::move(environment), options, folder);
  }

  // The whole output, up to its end.
  [[nodiscard]] std::string output() const {
    std::ifstream pipe(pipePath());
    return {std::istreambuf_iterator<char>(pipe), {}};
  }

  std::string outputOf(const std::string& script, Texts environment = {},
                       int options = Process::ownProcessGroup, const char* folder = nullptr) const {
    const auto child = shell(script, std::move(environment), options, folder);
    EXPECT_GT(child->launch(), 0);
    return output();
  }

  // Waits until the child prints "ready" first; returns the rest of its output.
  [[nodiscard]] std::ifstream outputAfterReady() const {
    std::ifstream pipe(pipePath());
    std::string word;
    pipe >> word;
    EXPECT_EQ(word, "ready");
    return pipe;
  }

  [[nodiscard]] std::string pipePath() const { return m_folder / "pipe"; }

  const support::TemporaryFolder m_folder;
};
