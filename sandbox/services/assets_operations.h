#pragma once

#include <span>

#include "dispatch/service.h"
#include "store/folder_store.h"

namespace sandbox {

// The Assets service's operations, one table per area; assets_service.cpp joins them.
std::span<const Operation> asset_operations();
std::span<const Operation> folder_operations();

// Refuses, with a "not found" fault, an id that is not a folder of the selected account.
Folder require_folder(const Call& call, std::int32_t id);

}  // namespace sandbox
