#include "binding.h"

namespace vptz_python {
namespace {

// The longest reply of a raw call, in bytes.
constexpr int kReplyCapacity = 65536;

void Connect(Client& client, const std::string& name, const std::optional<std::string>& address) {
  RefuseNul(name, "name");
  if (address) RefuseNul(*address, "address");
  client.Connect(name, address);
}

py::bytes Call(Client& client, std::string method, std::string request, int timeout) {
  RefuseNul(method, "method");
  auto [result, reply] =
      client.Run([method = std::move(method), request = std::move(request), timeout](VptzClient& self) {
        std::string buffer(kReplyCapacity, '\0');
        int length = kReplyCapacity;
        const int sent = self.CallSync(method.c_str(), request.data(), static_cast<int>(request.size()),
                                       &buffer[0], &length, self.GetVptzTimeout(timeout));
        buffer.resize(sent < 0 ? 0 : static_cast<std::size_t>(length));
        return std::make_pair(sent, std::move(buffer));
      });
  AnswerOrRaise(result);
  return py::bytes(reply);
}

int ResolveTimeout(Client& client, int timeout) {
  return client.Run([timeout](VptzClient& self) { return self.GetVptzTimeout(timeout); });
}

std::string Version(Client& client) {
  return client.Run([](VptzClient& self) { return std::string(self.Version()); });
}

}  // namespace

void AddConnection(ClientClass& client) {
  client
      .def(py::init([] { return std::make_shared<Client>(); }),
           "Reads the configuration and opens the database; does not connect.")
      .def("connect", Connect, py::arg("name") = "python", py::arg("address") = py::none(),
           "Connects to the message bus, within 2 seconds. `name` is shown to the broker's operator; the first "
           "one "
           "stays. `address` is 'unix:/path' or 'mqtt://host[:port]', None the default one. Raises "
           "ConnectionError; "
           "the client goes on trying all the same. Raises ValueError for a text with a NUL character.")
      .def("disconnect", &Client::Disconnect,
           "Leaves the message bus. Calls that other threads wait in fail with ECONNRESET.")
      .def("__enter__", [](py::object self) { return self; })
      .def("__exit__", [](Client& self, const py::args&) { self.Disconnect(); })
      .def("version", Version, "The library's version.")
      .def("timeout", ResolveTimeout, py::arg("seconds") = 0,
           "The time-out, in seconds, that a call with this one has: itself, or the configured one.")
      .def("call", Call, py::arg("method"), py::arg("request") = py::bytes(), Timeout(),
           "Sends a method of the service a serialized VptzCommand and returns the serialized VptzResponse, of "
           "at "
           "most 65536 bytes. The status in the response is not looked at.");
}

}  // namespace vptz_python
