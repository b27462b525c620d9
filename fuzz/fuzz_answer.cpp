// The answer reader as a call meets it: the body arrives in chunks of any size (the first byte
// of the input picks how it is cut, the second the charset of the Content-Type), then the
// answer is walked as the operations walk it: the fault check and its alert, and the record
// readers of lists and records.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "brenmoor/client.h"
#include "brenmoor/deployment.h"
#include "brenmoor/project.h"
#include "projects/deployment_info.h"
#include "projects/project_info.h"
#include "service/call.h"
#include "service/fields.h"
#include "soap/answer_parser.h"
#include "soap/failure.h"
#include "users/client_record.h"
#include "util/time_zone.h"

namespace {

using brenmoor::service::Fields;

// What each reader does with a failure is the pipeline's business (it reports whatever is
// thrown); the fuzzer looks for what sanitizers see, hangs and growth.
template <class Read>
void attempt(Read&& read) {
  try {
    read();
  } catch (...) {
  }
}

// Every child of every item read by name as each field type, as the record readers do.
void readEveryField(brenmoor::soap::Node list) {
  for (brenmoor::soap::Node item : list.children()) {
    const Fields in(item, Fields::Missing::KeepsDefault);
    for (brenmoor::soap::Node child : item.children()) {
      attempt([&] { (void)in.value<std::string>(child.name()); });
      attempt([&] { (void)in.value<bool>(child.name()); });
      attempt([&] { (void)in.value<int16_t>(child.name()); });
      attempt([&] { (void)in.value<int32_t>(child.name()); });
      attempt([&] { (void)in.value<double>(child.name()); });
      attempt([&] { (void)in.value<brenmoor::Date>(child.name()); });
      attempt([&] { (void)child.sharesValueWith(item); });
    }
  }
}

void walk(const brenmoor::soap::Answer& answer) {
  const brenmoor::util::PinnedOffset oneOffsetPerAnswer;
  if (const brenmoor::soap::Node fault = answer.fault()) {
    attempt([&] { (void)brenmoor::service::genericFaultAlert(fault); });
    // The duplicate-name check, as the pipeline makes it.
    const brenmoor::soap::Node detail = fault.child("detail");
    const brenmoor::soap::Node id = detail ? detail.child("id") : brenmoor::soap::Node();
    if (id) attempt([&] { (void)id.textContent(); });
    return;
  }
  for (size_t i = 0; i < answer.parameterCount(); ++i) (void)answer.parameter(i).name();
  brenmoor::soap::Node returned;
  attempt([&] { returned = answer.returnNode(); });
  if (!returned) return;
  const Fields fields(returned);
  using namespace brenmoor;
  attempt([&] { service::listOf<ProjectInfo, projects::readProjectInfo>(fields); });
  attempt([&] { service::record<ProjectInfo, projects::readProjectInfo>(fields); });
  attempt([&] { service::record<DeploymentInfo, projects::readDeploymentInfo>(fields); });
  attempt([&] { service::listOf<Client, users::readClient>(fields); });
  attempt([&] {
    service::listOf<Client, users::readClient>(fields.reading(Fields::Missing::KeepsDefault));
  });
  attempt([&] { (void)service::asText(fields); });
  attempt([&] { (void)service::asBool(fields); });
  attempt([&] { (void)service::asInt16(fields); });
  attempt([&] { (void)fields.as<int32_t>(); });
  attempt([&] { (void)fields.as<double>(); });
  attempt([&] { (void)fields.as<Date>(); });
  readEveryField(returned);
  attempt([&] { (void)returned.textContent(); });
  attempt([&] {
    (void)returned.valueLocalName();
    (void)returned.valueNamespace();
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const uint8_t cut = data[0];
  static constexpr std::string_view kCharsets[] = {
      "", "utf-8", "UTF-8", "iso-8859-1", "windows-1252", "us-ascii", "utf-16", "x"};
  const std::string_view charset = kCharsets[data[1] % std::size(kCharsets)];
  const std::string_view body(reinterpret_cast<const char*>(data) + 2, size - 2);

  // Low bits: the largest chunk; the rest seed the sizes, so each cut differs.
  static constexpr size_t kLargest[] = {1, 2, 3, 7, 16, 64, 512, 1 << 16};
  const size_t largest = kLargest[cut & 7];
  uint32_t state = 0x9E3779B9u ^ cut;
  brenmoor::soap::AnswerLimits limits;
  limits.maxBytes = 1 << 20;
  try {
    brenmoor::soap::AnswerParser parser(charset, "fuzz", limits, cut & 0x80 ? body.size() : 0);
    for (size_t at = 0; at < body.size();) {
      state = state * 1664525u + 1013904223u;
      const size_t n = std::min(body.size() - at, 1 + (state >> 8) % largest);
      parser.feed(body.substr(at, n));
      at += n;
    }
    walk(parser.finish());
  } catch (const brenmoor::soap::Failure&) {
  }
  return 0;
}
