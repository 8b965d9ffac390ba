#include "bus/server.h"

#include <cerrno>
#include <exception>
#include <string>

#include "bus/delivery.h"
#include "handlers/answers.h"
#include "log.h"

namespace vptzd {

Server::~Server() {
  bus_.reset();
  context_.emit = [](const char*, const std::string&) {};
}

int Server::Start(const char* address) {
  bus_service* service = nullptr;
  const int result = bus_service_new(kName, address, &Server::OnRequest, this, &service);
  if (result < 0) return result;
  bus_.reset(service);
  context_.emit = [this](const char* signal, const std::string& payload) { EmitSignal(signal, payload); };
  return 0;
}

void Server::EmitSignal(const char* signal, const std::string& payload) {
  const int result = bus_service_emit(bus_.get(), signal, payload.data(), static_cast<int>(payload.size()));
  if (result < 0) VPTZD_LOG(LogLevel::kWarning, "the signal %s is lost: %d", signal, result);
}

// An exception must not leave into the bus library, which is C.
void Server::OnRequest(bus_service*, bus_request* request, void* server) noexcept {
  try {
    static_cast<Server*>(server)->Receive(std::make_shared<BusRequest>(request));
  } catch (const std::exception& error) {
    VPTZD_LOG(LogLevel::kError, "a request cannot be taken: %s", error.what());
  }
}

void Server::Receive(const RequestPtr& request) {
  const std::string payload = request->payload();
  if (request->method() == kSimulateFaults) {
    request->Reply(SimulateFaults(context_.fleet, payload).SerializeAsString());
    return;
  }
  Call call;
  call.caller = request->caller();
  const Status status = ReadCall(request->method(), payload.data(), static_cast<int>(payload.size()), &call);
  if (status != Status::kDone) {
    VPTZD_LOG(LogLevel::kNotice, "%s is refused with %d", request->method().c_str(), static_cast<int>(status));
    request->Reply(Answer(status).SerializeAsString());
  } else {
    Handle(request, call, AnswerAtOnce);
  }
}

void Server::Handle(const RequestPtr& request, const Call& call, Answering* answering) {
  try {
    if (const auto answer = answering(context_, call)) {
      Send(request, call, *answer);
    } else {
      context_.agenda.Post([this, request, call] { Handle(request, call, AnswerStoring); });
    }
  } catch (const std::exception& error) {
    VPTZD_LOG(LogLevel::kError, "%s failed: %s", request->method().c_str(), error.what());
    request->Fail(-EIO);
  }
}

void Server::Send(const RequestPtr& request, const Call& call, const tutorial::VptzResponse& response) {
  if (response.status_code() < 0) {
    VPTZD_LOG(LogLevel::kNotice, "%s is refused with %d", request->method().c_str(), response.status_code());
  }
  const Delivery delivery = PlanDelivery(context_.fleet, call, response);
  if (delivery.delay == std::chrono::nanoseconds(0)) {
    request->Reply(delivery.bytes);
    return;
  }
  context_.agenda.PostIn(delivery.delay, [request, delivery] {
    delivery.lost ? request->Fail(-ETIMEDOUT) : request->Reply(delivery.bytes);
  });
}

}  // namespace vptzd
