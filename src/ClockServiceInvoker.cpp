#include "ClockServiceInvoker.h"

#include <array>
#include <memory>
#include <typeinfo>

#include "BorrowedStream.h"
#include "ClockService.h"
#include "ClockServiceIfc.h"
#include "Executable.h"
#include "FrameworkContext.h"
#include "InvokerResponse.h"
#include "Log.h"
#include "MessageCodec.h"
#include "Method.h"
#include "RemoteMethods.h"

namespace {

// The plug-in's own service is checked first: dynamic_cast compares the names of all bases. Null
// when the executable is not a clock.
ClockServiceIfc* clockOf(Executable* executable) {
  if (executable != nullptr && typeid(*executable) == typeid(ClockService))
    return static_cast<ClockService*>(executable);
  return dynamic_cast<ClockServiceIfc*>(executable);
}

void sendReply(Method& reply, MessageCodec& codec, std::stringstream& stream,
               InvokerResponse& response) {
  startOver(stream);
  codec.encode(reply, stream);
  stream.rdbuf()->pubseekpos(0, std::ios::in);  // a codec may have read what it wrote
  std::array<char, 512> usual;  // the usual reply needs no heap memory; a longer one does
  const auto size = static_cast<std::size_t>(stream.rdbuf()->sgetn(usual.data(), usual.size()));
  if (size < usual.size()) return response.sendReply(usual.data(), static_cast<int>(size));
  const std::string bytes = stream.str();
  response.sendReply(bytes.data(), static_cast<int>(bytes.size()));
}

}  // namespace

extern "C" Invoker* createClockServiceInvoker() {
  return new ClockServiceInvoker;
}

ClockServiceInvoker::~ClockServiceInvoker() = default;

void ClockServiceInvoker::initInvoker(FrameworkContext* frameworkContext) {
  INVOKER_LOG(logStartUp, "ClockServiceInvoker initialised");
  context = frameworkContext;
}

void ClockServiceInvoker::handleMessage(Executable* executable, const char* message, int length,
                                        InvokerResponse* response) {
  const std::unique_ptr<InvokerResponse> ownedResponse(response);
  ClockServiceIfc* const service = clockOf(executable);
  if (service == nullptr) {
    INVOKER_LOG(logError, "Could not cast executable to ClockServiceIfc");
    return;
  }
  if (context == nullptr || response == nullptr) {
    INVOKER_LOG(logError, "Failed to decode msg");
    return;
  }
  answer(*service, message, length, *response);
}

void ClockServiceInvoker::answer(ClockServiceIfc& service, const char* message, int length,
                                 InvokerResponse& response) {
  BorrowedStream borrowed;
  std::stringstream& stream = *borrowed;
  Method request;
  MessageCodec* const codec = context->getCodec(response.getCodecName());
  stream.write(message, length);
  if (codec == nullptr || !codec->decode(stream, request)) {
    INVOKER_LOG(logError, "Failed to decode msg");
    return;
  }
  INVOKER_LOG(logInformation, "handleMessage called: %s", stream.str().c_str());
  const RemoteMethod* const method = findRemoteMethod(request.getName());
  if (method == nullptr) {
    INVOKER_LOG(logError, "Invalid Message, %s", stream.str().c_str());
    return;
  }
  Method reply(method->name, Method::reply);
  RemoteCall call{service, request, reply, *context, response};
  method->handle(call);
  if (method->replies) sendReply(reply, *codec, stream, response);
}
