#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "soap/value.h"

namespace sandbox {

// What a handler answers. The handler states the result; render() writes it in the
// rpc/encoded form: one <OPReturn> in the <OPResponse> wrapper, records (also those nested
// in records) as multiRef entries after the wrapper. A handler that states nothing gets an
// empty wrapper.
class Reply {
 public:
  void scalar(Value value) { result_.emplace(std::move(value)); }
  // A record of type `type` (e.g. "DeploymentInfo") in the service's namespace.
  void record(std::string type, Fields fields) {
    result_.emplace(Record{std::move(type), std::move(fields)});
  }
  void records(std::string type, std::vector<Fields> items) {
    result_.emplace(RecordArray{std::move(type), std::move(items)});
  }
  void strings(Strings items) { result_.emplace(std::move(items)); }
  void dates(Dates items) { result_.emplace(std::move(items)); }

  // The whole answer envelope for `operation` of the service whose namespace is `ns`.
  std::string render(std::string_view operation, std::string_view ns) const;

 private:
  std::optional<Value> result_;
};

}  // namespace sandbox
