#pragma once
// The library's records as JSON objects whose keys are the property names. A flagged
// property appears only when it occurred (was in the answer); a plain one always appears.
// Dates are "yyyy-mm-dd hh:mm:ss" in local time.

#include <nlohmann/json.hpp>

#include <memory>

#include "brenmoor/brenmoor.h"

namespace brenmoor::cli {

nlohmann::json toJson(const UserAccountInfo& account);
nlohmann::json toJson(const ProjectInfo& project);
nlohmann::json toJson(const TemplateInfo& info);
nlohmann::json toJson(const ThemeInfo& theme);
nlohmann::json toJson(const DeploymentInfo& deployment);
nlohmann::json toJson(const DataRecord& record);
nlohmann::json toJson(const ZylAsset& asset);
nlohmann::json toJson(const ZylFolderNode& folder);
nlohmann::json toJson(const Client& client);
nlohmann::json toJson(const Quota& quota);
nlohmann::json toJson(const PageHitInfo& hit);
nlohmann::json toJson(const PageViewerInfo& viewer);
nlohmann::json toJson(const PollQuestion& question);
nlohmann::json toJson(const Survey& survey);
nlohmann::json toJson(const QAItem& item);

// A list of records as a JSON array.
template <class Record>
nlohmann::json toJson(const Collection<Record>& items) {
  auto array = nlohmann::json::array();
  for (const auto& item : items) array.push_back(toJson(*item));
  return array;
}

}  // namespace brenmoor::cli
