#ifndef DORV_BUS_SERVICE_IMPLEMENTATION_H
#define DORV_BUS_SERVICE_IMPLEMENTATION_H

#include <condition_variable>
#include <deque>
#include <memory>
#include <string>

#include "connection.h"
#include "dorv_bus_service.h"
#include "own_process.h"
#include "request_identity.h"

// A request between its arrival and its answer.
struct bus_request {
  std::shared_ptr<bus_service> service;
  std::uint64_t session;  // number of the session over which it came
  dorv::RequestIdentity identity;
  std::string method;
  std::string payload;
  std::string reply_topic;
};

struct bus_service final : dorv::Connection::Owner, std::enable_shared_from_this<bus_service> {
 public:
  bus_service(const char* name, bus_method_handler handler, void* user_data);
  ~bus_service() override;

  bool valid() const { return connection_.valid(); }
  // False in a child made by fork(), where nothing of it may be touched.
  bool InItsProcess() const { return process_.IsThisOne(); }
  // Connects and serves; keeps itself until Free.
  int Begin(const char* address);
  int Free();

  int Emit(const char* signal, const void* payload, int length);
  int Reply(const bus_request& request, const void* reply, int length, int error);

 private:
  using Request = std::unique_ptr<bus_request>;

  // Connection::Owner
  int SetWill(mosquitto* instance) override;
  int RestoreSubscriptions() override;
  int SubscriptionsRestored() override;
  void Receive(const mosquitto_message& message, const mosquitto_property* properties) override;
  void PublicationConfirmed(int message_id, int reason) override;
  void SessionEnded() override;
  dorv::TimePoint EndOverdueCalls(dorv::TimePoint now) override;
  void HandleRequests() override;

  dorv::Session& session() { return connection_.session(); }

  void ReceivePresence(const mosquitto_message& message);
  void ReceiveRequest(const mosquitto_message& message, const mosquitto_property* properties);
  void Handle(Request request);
  int Announce();

  const dorv::OwnProcess process_;
  const std::string name_;
  const std::string instance_;  // tells this service's presence from another's; anybody may read it
  const bus_method_handler handler_;
  void* const user_data_;
  dorv::Connection connection_;
  dorv::SeenRequests seen_;
  std::deque<Request> requests_;
  int announcement_ = 0;  // message id of a presence that the broker has yet to confirm
  bool present_ = false;  // what the broker takes now, it takes after the presence
  bool announce_again_ = false;
  bool serving_ = false;
  bool freed_ = false;
  std::condition_variable idle_;
  std::shared_ptr<bus_service> self_;
};

#endif
