#include <algorithm>
#include <array>

#include "services/reports_operations.h"
#include "soap/faults.h"
#include "store/quota_store.h"

namespace sandbox {
namespace {

// The client reads these counts as 16-bit numbers.
std::int16_t as_short(std::int64_t count) {
  return static_cast<std::int16_t>(std::clamp<std::int64_t>(count, 0, INT16_MAX));
}

void get_total_page_hits(Call& call) {
  const ReportPage page = require_report_page(call);
  call.reply.scalar(as_short(total_hits(call.db, page, report_range(call))));
}

void get_total_page_view_time(Call& call) {
  const ReportPage page = require_report_page(call);
  call.reply.scalar(as_short(total_view_seconds(call.db, page, report_range(call))));
}

void get_limited_page_view_time(Call& call) {
  const ReportPage page = require_report_page(call);
  const TimeRange range = report_range(call);
  call.reply.scalar(
      limited_view_seconds(call.db, page, range, call.args.boolean("useDurationOnly")));
}

void get_limited_user_viewer_time(Call& call) {
  const TimeRange range = report_range(call);
  call.reply.scalar(account_view_seconds(call.db, call.account(), range,
                                         call.args.string("projectType"),
                                         call.args.string("templateType")));
}

// Files and records belong to the account, not to a type of project or template: the types
// are read but the answer is the account's whole storage, as its quota counts it.
void get_user_storage_used(Call& call) {
  call.args.string("projectType");
  call.args.string("templateType");
  const double bytes = quota_used(call.db, QuotaKind::storage, call.account());
  call.reply.scalar(static_cast<std::int32_t>(std::min<double>(bytes, INT32_MAX)));
}

void get_total_participants(Call& call) {
  const ReportPage page = require_report_page(call);
  call.reply.scalar(as_short(participant_count(call.db, page, report_range(call))));
}

void get_total_nonparticipants(Call& call) {
  const ReportPage page = require_report_page(call);
  const TimeRange range = report_range(call);
  call.reply.scalar(
      as_short(viewer_count(call.db, page, range) - participant_count(call.db, page, range)));
}

void get_total_participant_registrants(Call& call) {
  const ReportPage page = require_report_page(call);
  call.reply.scalar(as_short(participant_registrant_count(call.db, page, report_range(call))));
}

void get_total_registrants(Call& call) {
  call.reply.scalar(as_short(registrant_count(call.db, require_report_page(call))));
}

struct Filter {
  std::string_view name;    // as the client names it
  std::string_view column;  // of page_hits
};

constexpr std::array kFilters{Filter{"country", "country"},
                              Filter{"browserType", "browser_type"},
                              Filter{"browserVersion", "browser_version"},
                              Filter{"operatingSystem", "operating_system"},
                              Filter{"language", "language"},
                              Filter{"ipAddress", "ip"}};

void get_unique_page_hits(Call& call) {
  const ReportPage page = require_report_page(call);
  const TimeRange range = report_range(call);
  const std::string filter = call.args.string("filter");
  const std::string filter_operator = call.args.string("filterOperator");
  const std::string value = call.args.string("filterValue");
  if (filter.empty()) return call.reply.scalar(as_short(viewer_count(call.db, page, range)));
  const auto known = std::find_if(kFilters.begin(), kFilters.end(),
                                  [&](const Filter& f) { return f.name == filter; });
  if (known == kFilters.end()) {
    throw ApplicationFault("InvalidFilter",
                           "Filters are country, browserType, browserVersion, operatingSystem, "
                           "language and ipAddress");
  }
  if (filter_operator != "=" && filter_operator != "!=" && filter_operator != "<>") {
    throw ApplicationFault("InvalidFilter", "Filter operators are =, != and <>");
  }
  call.reply.scalar(
      as_short(unique_viewers(call.db, page, range, known->column, filter_operator == "=", value)));
}

void get_page_hit_list(Call& call) {
  const ReportPage page = require_report_page(call);
  call.reply.records("PageHitInfo", page_hit_records(call.db, page, report_range(call)));
}

void get_participant_list(Call& call) {
  const ReportPage page = require_report_page(call);
  call.reply.records("PageViewerInfo",
                     viewer_records(call.db, page, report_range(call), ViewerKind::participants));
}

void get_registrant_list(Call& call) {
  const ReportPage page = require_report_page(call);
  call.reply.records("PageViewerInfo",
                     viewer_records(call.db, page, report_range(call), ViewerKind::registrants));
}

constexpr Operation kOperations[] = {
    {"getTotalPageHits", Access::cookie, get_total_page_hits,
     "pageGuid startDate:dateTime endDate:dateTime -> short"},
    {"getTotalPageViewTime", Access::cookie, get_total_page_view_time,
     "pageGuid startDate:dateTime endDate:dateTime -> short"},
    {"getLimitedPageViewTime", Access::cookie, get_limited_page_view_time,
     "pageGuid startDate:dateTime endDate:dateTime useDurationOnly:boolean -> double"},
    {"getLimitedUserViewerTime", Access::cookie, get_limited_user_viewer_time,
     "startDate:dateTime endDate:dateTime projectType templateType -> double"},
    {"getUserStorageUsed", Access::cookie, get_user_storage_used,
     "projectType templateType -> int"},
    {"getTotalParticipants", Access::cookie, get_total_participants,
     "pageGuid startDate:dateTime endDate:dateTime -> short"},
    {"getTotalNonparticipants", Access::cookie, get_total_nonparticipants,
     "pageGuid startDate:dateTime endDate:dateTime -> short"},
    {"getTotalParticipantRegistrants", Access::cookie, get_total_participant_registrants,
     "pageGuid startDate:dateTime endDate:dateTime -> short"},
    {"getTotalRegistrants", Access::cookie, get_total_registrants, "pageGuid -> short"},
    {"getUniquePageHits", Access::cookie, get_unique_page_hits,
     "pageGuid startDate:dateTime endDate:dateTime filter filterOperator filterValue -> short"},
    {"getPageHitList_Array", Access::cookie, get_page_hit_list,
     "pageGuid startDate:dateTime endDate:dateTime -> PageHitInfo[]"},
    {"getParticipantList_Array", Access::cookie, get_participant_list,
     "pageGuid startDate:dateTime endDate:dateTime -> PageViewerInfo[]"},
    {"getRegistrantList_Array", Access::cookie, get_registrant_list,
     "pageGuid startDate:dateTime endDate:dateTime -> PageViewerInfo[]"},
};

}  // namespace

std::span<const Operation> report_operations() {
  return kOperations;
}

}  // namespace sandbox
