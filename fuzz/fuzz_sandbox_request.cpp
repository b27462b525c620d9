// The sandbox's request reader: any body is parsed as a request to the main service, and every
// argument is read as each type the operations ask for. A refusal is a ServerException that
// becomes a fault envelope; anything else thrown would reach the client as an internal error,
// so the fuzzer treats it as a finding.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "soap/arguments.h"
#include "soap/faults.h"
#include "soap/request.h"

namespace {

template <class Read>
void attempt(Read&& read) {
  try {
    read();
  } catch (const sandbox::ServerException& error) {
    (void)sandbox::server_fault_envelope(error);
  }
}

void readAll(const sandbox::Arguments& args, pugi::xml_node node, int depth) {
  for (pugi::xml_node child : node.children()) {
    if (child.type() != pugi::node_element) continue;
    const std::string name = child.name();
    attempt([&] { (void)args.string(name); });
    attempt([&] { (void)args.int32(name); });
    attempt([&] { (void)args.int16(name); });
    attempt([&] { (void)args.boolean(name); });
    attempt([&] { (void)args.real(name); });
    attempt([&] { (void)args.date_time(name); });
    attempt([&] { (void)args.strings(name); });
    attempt([&] { (void)args.optional_structure(name); });
    attempt([&] {
      for (const sandbox::Arguments& item : args.structures(name)) (void)item.leading("key");
    });
    if (depth < 4) {
      attempt([&] { readAll(args.structure(name), child, depth + 1); });
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view body(reinterpret_cast<const char*>(data), size);
  attempt([&] {
    const auto request = sandbox::SoapRequest::parse(body, "urn:telvane-main", "TelvaneMain");
    const sandbox::Arguments args(request.operation(), request.operation_name());
    attempt([&] { (void)args.leading("key"); });
    readAll(args, request.operation(), 0);
  });
  return 0;
}
