#include "ClockServiceInvoker.h"

#include <memory>
#include <typeinfo>

#include "ClockService.h"
#include "ClockServiceIfc.h"
#include "Executable.h"
#include "FrameworkContext.h"
#include "InvokerResponse.h"
#include "Log.h"
#include "MessageCodec.h"
#include "MessageStream.h"
#include "Method.h"
#include "RemoteMethods.h"

namespace {

// Nearly always the plug-in's own service, which is known at once; the cast looks through the names
// of all its bases. Null for whatever is no clock.
ClockServiceIfc* clockOf(Executable* executable) {
  if (executable != nullptr && typeid(*executable) == typeid(ClockService))
    return static_cast<ClockService*>(executable);
  return dynamic_cast<ClockServiceIfc*>(executable);
}

void sendReply(Method& reply, MessageCodec& codec, MessageStream& stream,
               InvokerResponse& response) {
  stream.startOver();
  codec.encode(reply, stream);
  response.sendReply(stream.data(), static_cast<int>(stream.size()));
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
  MessageStream& stream = *borrowed;
  Method request;
  MessageCodec* const codec = context->getCodec(response.getCodecName());
  stream.write(message, length);
  if (codec == nullptr || !codec->decode(stream, request)) {
    INVOKER_LOG(logError, "Failed to decode msg");
    return;
  }
  INVOKER_LOG(logInformation, "handleMessage called: %s", stream.text().c_str());
  const RemoteMethod* const method = findRemoteMethod(request.getName());
  if (method == nullptr) {
    INVOKER_LOG(logError, "Invalid Message, %s", stream.text().c_str());
    return;
  }
  Method reply(method->name, Method::reply);
  RemoteCall call{service, request, reply, *context, response};
  method->handle(call);
  if (method->replies) sendReply(reply, *codec, stream, response);
}
