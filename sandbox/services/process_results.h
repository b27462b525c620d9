#pragma once

#include <string_view>

#include "dispatch/service.h"
#include "processes/process_runner.h"

namespace sandbox {

// The process that the request's "procGuid" names: its first piece, or a whole procGuid.
// Refused with the "not found" fault when unknown.
ProcessStatus process_status(const Call& call);

// Answers the outcome of a finished process of `kind` that the caller started.
void answer_process_result(Call& call, std::string_view kind);

}  // namespace sandbox
