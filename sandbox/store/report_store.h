#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "soap/value.h"

namespace sandbox {

class Database;

// A page as reports name it: one of the account's templates, by its own guid or by the guid
// of its current deployment.
struct ReportPage {
  std::string template_guid;
  std::string project_guid;
  std::int64_t duration = 0;  // of its deployment, in seconds; 0 when it has none
};

std::optional<ReportPage> report_page(Database& db, std::int64_t account,
                                      std::string_view page_guid);

// Both ends included; ms since the epoch, UTC.
struct TimeRange {
  std::int64_t from = 0;
  std::int64_t to = 0;
};

std::int64_t total_hits(Database& db, const ReportPage& page, const TimeRange& range);
// Seconds of the closed visits.
std::int64_t total_view_seconds(Database& db, const ReportPage& page, const TimeRange& range);
// Seconds of each visit, at most the deployment's duration when it has one; open visits
// count up to the end of the range (or now) unless `closed_only`.
double limited_view_seconds(Database& db, const ReportPage& page, const TimeRange& range,
                            bool closed_only);
// The limited seconds of the closed visits of every page of the account whose project and
// template have the given types (an empty type matches any).
double account_view_seconds(Database& db, std::int64_t account, const TimeRange& range,
                            std::string_view project_type, std::string_view template_type);

// Distinct viewers: all, those who answered a poll, survey or question, and those of them
// who registered for the page's project.
std::int64_t viewer_count(Database& db, const ReportPage& page, const TimeRange& range);
std::int64_t participant_count(Database& db, const ReportPage& page, const TimeRange& range);
std::int64_t participant_registrant_count(Database& db, const ReportPage& page,
                                          const TimeRange& range);
std::int64_t registrant_count(Database& db, const ReportPage& page);

// Viewers with a hit whose client detail `column` compares with `value`, case ignored;
// `equal` false counts those whose hits do not. An empty column counts every viewer.
std::int64_t unique_viewers(Database& db, const ReportPage& page, const TimeRange& range,
                            std::string_view column, bool equal, std::string_view value);

// PageHitInfo records, oldest first.
std::vector<Fields> page_hit_records(Database& db, const ReportPage& page, const TimeRange& range);

enum class ViewerKind { participants, registrants };
// PageViewerInfo records of the viewers of that kind, by first view.
std::vector<Fields> viewer_records(Database& db, const ReportPage& page, const TimeRange& range,
                                   ViewerKind kind);

// The Client record of the viewer of a hit, with that hit's ClientDetails: the registrant it
// became in the project, or a client made of the visit.
Value hit_client(Database& db, std::string_view project_guid, std::int64_t hit_id);

}  // namespace sandbox
