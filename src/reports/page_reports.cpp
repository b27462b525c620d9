// Page and viewer statistics from the Reports service. A report range runs from the start date
// (the zero date when none is given) to the end date (now when none is given).

#include "brenmoor/zyl_service.h"
#include "reports/report_common.h"
#include "service/call.h"
#include "users/client_record.h"

namespace brenmoor {

using namespace service;
using reports::reportOperation;
using reports::startOf;

namespace {

void readPageHit(const Fields& in, PageHitInfo& hit) {
  in("pagehitDate", hit.pagehitDate);
  in("timeSpent", hit.timeSpent);
  in("closed", hit.closed);
  if (auto client = in.child("client")) hit.Client = record<Client, users::readClient>(*client);
}

void readPageViewer(const Fields& in, PageViewerInfo& viewer) {
  in("firstViewed", viewer.firstViewed);
  in("lastViewed", viewer.lastViewed);
  in("totalTimeOnPage", viewer.totalTimeOnPage);
  in("registered", viewer.registered);
  in("participated", viewer.participated);
  if (auto client = in.child("client")) {
    viewer.Client = record<Client, users::readClient>(*client);
  }
}

double asDouble(const Fields& returned) {
  return returned.as<double>();
}
int32_t asInt32(const Fields& returned) {
  return returned.as<int32_t>();
}

// The usual shape: a page and a date range.
constexpr auto pageCount(std::string_view name) {
  return reportOperation<int16_t>(name).sends("pageGuid", "startDate", "endDate").reads(asInt16);
}
template <class T, void (*Fill)(const Fields&, T&)>
constexpr auto pageList(std::string_view name) {
  return reportOperation<std::shared_ptr<Collection<T>>>(name)
      .sends("pageGuid", "startDate", "endDate")
      .reads(listOf<T, Fill>);
}

constexpr auto kGetReport =
    reportOperation<double>("").sends("pageGuid", "startDate", "endDate").reads(asDouble);
constexpr auto kTotalPageHits = pageCount("getTotalPageHits");
constexpr auto kTotalPageViewTime = pageCount("getTotalPageViewTime");
constexpr auto kLimitedPageViewTime =
    reportOperation<double>("getLimitedPageViewTime")
        .sends("pageGuid", "startDate", "endDate", "useDurationOnly")
        .reads(asDouble);
constexpr auto kLimitedUserViewerTime =
    reportOperation<double>("getLimitedUserViewerTime")
        .sends("startDate", "endDate", "projectType", "templateType")
        .reads(asDouble);
constexpr auto kUserStorageUsed = reportOperation<int32_t>("getUserStorageUsed")
                                      .sends("projectType", "templateType")
                                      .reads(asInt32);
constexpr auto kTotalParticipants = pageCount("getTotalParticipants");
constexpr auto kTotalNonparticipants = pageCount("getTotalNonparticipants");
constexpr auto kTotalParticipantRegistrants = pageCount("getTotalParticipantRegistrants");
constexpr auto kTotalRegistrants =
    reportOperation<int16_t>("getTotalRegistrants").sends("pageGuid").reads(asInt16);
constexpr auto kUniquePageHits =
    reportOperation<int16_t>("getUniquePageHits")
        .sends("pageGuid", "startDate", "endDate", "filter", "filterOperator", "filterValue")
        .reads(asInt16);
constexpr auto kPageHitList = pageList<PageHitInfo, readPageHit>("getPageHitList_Array");
constexpr auto kParticipantList =
    pageList<PageViewerInfo, readPageViewer>("getParticipantList_Array");
constexpr auto kRegistrantList =
    pageList<PageViewerInfo, readPageViewer>("getRegistrantList_Array");

}  // namespace

double ZylService::getReport(const std::string& reportName, const std::string& pageGuid,
                             const std::optional<Date>& startDate,
                             const std::optional<Date>& endDate) {
  return kGetReport.named(reportName)(*state_, pageGuid, startOf(startDate), endDate);
}
int16_t ZylService::getTotalPageHits(const std::string& pageGuid,
                                     const std::optional<Date>& startDate,
                                     const std::optional<Date>& endDate) {
  return kTotalPageHits(*state_, pageGuid, startOf(startDate), endDate);
}
int16_t ZylService::getTotalPageViewTime(const std::string& pageGuid,
                                         const std::optional<Date>& startDate,
                                         const std::optional<Date>& endDate) {
  return kTotalPageViewTime(*state_, pageGuid, startOf(startDate), endDate);
}
double ZylService::getLimitedPageViewTime(const std::string& pageGuid,
                                          const std::optional<Date>& startDate,
                                          const std::optional<Date>& endDate,
                                          bool useDurationOnly) {
  return kLimitedPageViewTime(*state_, pageGuid, startOf(startDate), endDate, useDurationOnly);
}
double ZylService::getLimitedUserViewerTime(const std::string& projectType,
                                            const std::string& templateType,
                                            const std::optional<Date>& startDate,
                                            const std::optional<Date>& endDate) {
  return kLimitedUserViewerTime(*state_, startOf(startDate), endDate, projectType, templateType);
}
int32_t ZylService::getUserStorageUsed(const std::string& projectType,
                                       const std::string& templateType) {
  return kUserStorageUsed(*state_, projectType, templateType);
}
int16_t ZylService::getTotalParticipants(const std::string& pageGuid,
                                         const std::optional<Date>& startDate,
                                         const std::optional<Date>& endDate) {
  return kTotalParticipants(*state_, pageGuid, startOf(startDate), endDate);
}
int16_t ZylService::getTotalNonparticipants(const std::string& pageGuid,
                                            const std::optional<Date>& startDate,
                                            const std::optional<Date>& endDate) {
  return kTotalNonparticipants(*state_, pageGuid, startOf(startDate), endDate);
}
int16_t ZylService::getTotalParticipantRegistrants(const std::string& pageGuid,
                                                   const std::optional<Date>& startDate,
                                                   const std::optional<Date>& endDate) {
  return kTotalParticipantRegistrants(*state_, pageGuid, startOf(startDate), endDate);
}
int16_t ZylService::getTotalRegistrants(const std::string& pageGuid) {
  return kTotalRegistrants(*state_, pageGuid);
}
int16_t ZylService::getUniquePageHits(const std::string& pageGuid,
                                      const std::optional<Date>& startDate,
                                      const std::optional<Date>& endDate, const std::string& filter,
                                      const std::string& filterOperator,
                                      const std::string& filterValue) {
  return kUniquePageHits(*state_, pageGuid, startOf(startDate), endDate, filter, filterOperator,
                         filterValue);
}
std::shared_ptr<Collection<PageHitInfo>> ZylService::getPageHitList(
    const std::string& pageGuid, const std::optional<Date>& startDate,
    const std::optional<Date>& endDate) {
  return kPageHitList(*state_, pageGuid, startOf(startDate), endDate);
}
std::shared_ptr<Collection<PageViewerInfo>> ZylService::getParticipantList(
    const std::string& pageGuid, const std::optional<Date>& startDate,
    const std::optional<Date>& endDate) {
  return kParticipantList(*state_, pageGuid, startOf(startDate), endDate);
}
std::shared_ptr<Collection<PageViewerInfo>> ZylService::getRegistrantList(
    const std::string& pageGuid, const std::optional<Date>& startDate,
    const std::optional<Date>& endDate) {
  return kRegistrantList(*state_, pageGuid, startOf(startDate), endDate);
}

}  // namespace brenmoor
