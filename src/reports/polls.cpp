// Polls, surveys and the question-and-answer board of a page, from the Reports service.

#include "brenmoor/zyl_service.h"
#include "reports/report_common.h"
#include "service/call.h"
#include "users/client_record.h"

namespace brenmoor {

using namespace service;
using reports::reportOperation;

namespace {

void readPollAnswer(const Fields& in, PollAnswer& a) {
  in("answerID", a.answerID);
  in("answerTxt", a.answerTxt);
  in("count", a.count);
}

void readPollQuestion(const Fields& in, PollQuestion& q) {
  in("guid", q.guid);
  in("questionTxt", q.questionTxt);
  in("responseCount", q.responseCount);
  if (auto answers = in.child("answers"))
    q.answers = readList<PollAnswer>(*answers, readPollAnswer);
}

void readPollResponse(const Fields& in, PollResponse& r) {
  in("pollGuid", r.pollGuid);
  in("answerGuid", r.answerGuid);
  in("responseDt", r.responseDt);
  in("userGuid", r.userGuid);
}

void readSurveyAnswer(const Fields& in, SurveyAnswer& a) {
  in("answerTxt", a.answerTxt);
  in("answerType", a.answerType);
  in("col", a.col);
  in("row", a.row);
  in("correct", a.correct);
  in("count", a.count);
  in("guid", a.guid);
}

// No question "guid": the summary does not carry it.
void readSurveyQuestion(const Fields& in, SurveyQuestion& q) {
  in("seqNo", q.seqNo);
  in("questionTxt", q.questionTxt);
  in("questionType", q.questionType);
  in("colCount", q.colCount);
  in("rowCount", q.rowCount);
  in("responseCount", q.responseCount);
  in("nonresponseCount", q.nonresponseCount);
  if (auto answers = in.child("answers")) {
    q.answers = readList<SurveyAnswer>(*answers, readSurveyAnswer);
  }
}

void readSurveyEntry(const Fields& in, Survey& s) {
  in("guid", s.guid);
  in("name", s.name);
}

void readSurveySummary(const Fields& in, Survey& s) {
  readSurveyEntry(in, s);
  if (auto questions = in.child("questions")) {
    s.questions = readList<SurveyQuestion>(*questions, readSurveyQuestion);
  }
}

void readSurveyResponse(const Fields& in, SurveyResponse& r) {
  in("guid", r.guid);
  in("questionGuid", r.questionGuid);
  in("answerGuid", r.answerGuid);
  in("answerTxt", r.answerTxt);
  in("responseDt", r.responseDt);
  in("userGuid", r.userGuid);
}

void readQAItem(const Fields& in, QAItem& q) {
  in("questionDt", q.questionDt);
  in("answerDt", q.answerDt);
  in("answerTxt", q.answerTxt);
  in("category", q.category);
  in("guid", q.guid);
  in("location", q.location);
  in("questionTxt", q.questionTxt);
  in("name", q.name);
  in("status", q.status);
  in("submitterHostname", q.submitterHostname);
  in("submitterIP", q.submitterIP);
  if (auto client = in.child("client")) q.Client = record<Client, users::readClient>(*client);
}

// The response operations hand out plain arrays where every other list is a collection.
template <class T, void (*Fill)(const Fields&, T&)>
std::vector<T> arrayOf(const Fields& list) {
  std::vector<T> items;
  list.forEachItem([&](const Fields& item) { Fill(item, items.emplace_back()); });
  return items;
}

constexpr const char* kResponsesSince = "3.2.4.60";

constexpr auto kPollSummary =
    reportOperation<std::shared_ptr<Collection<PollQuestion>>>("getPollSummaryResults_Array")
        .sends("pageGuid")
        .reads(listOf<PollQuestion, readPollQuestion>);
constexpr auto kPollResponses =
    reportOperation<std::vector<PollResponse>>("getPollResponseList_Array")
        .sends("pageGuid")
        .reads(arrayOf<PollResponse, readPollResponse>)
        .since(kResponsesSince);
constexpr auto kSurveyList =
    reportOperation<std::shared_ptr<Collection<Survey>>>("getSurveyList_Array")
        .sends("pageGuid")
        .reads(listOf<Survey, readSurveyEntry>);
constexpr auto kSurveySummary = reportOperation<std::shared_ptr<Survey>>("getSurveySummary")
                                    .sends("pageGuid", "surveyGuid")
                                    .reads(record<Survey, readSurveySummary>);
constexpr auto kSurveyResponses =
    reportOperation<std::vector<SurveyResponse>>("getSurveyResponseList_Array")
        .sends("pageGuid", "surveyGuid")
        .reads(arrayOf<SurveyResponse, readSurveyResponse>);
constexpr auto kQAList = reportOperation<std::shared_ptr<Collection<QAItem>>>("getQAList_Array")
                             .sends("pageGuid", "startDate", "endDate")
                             .reads(listOf<QAItem, readQAItem>);
constexpr auto kUpdateQAItem = reportOperation<bool>("updateQAItem")
                                   .sends("guid", "answer", "question", "name", "location")
                                   .reads(asBool)
                                   .since(kResponsesSince);
constexpr auto kUpdateQAItemStatus = reportOperation<bool>("updateQAItemStatus")
                                         .sends("guid", "status")
                                         .reads(asBool)
                                         .since(kResponsesSince);

}  // namespace

std::shared_ptr<Collection<PollQuestion>> ZylService::getPollSummaryResults(
    const std::string& pageGuid) {
  return kPollSummary(*state_, pageGuid);
}
std::vector<PollResponse> ZylService::getPollResponses(const std::string& pageGuid) {
  return kPollResponses(*state_, pageGuid);
}
std::shared_ptr<Collection<Survey>> ZylService::getSurveyList(const std::string& pageGuid) {
  return kSurveyList(*state_, pageGuid);
}
std::shared_ptr<Survey> ZylService::getSurveySummary(const std::string& pageGuid,
                                                     const std::string& surveyGuid) {
  return kSurveySummary(*state_, pageGuid, surveyGuid);
}
std::vector<SurveyResponse> ZylService::getSurveyResponses(const std::string& pageGuid,
                                                           const std::string& surveyGuid) {
  return kSurveyResponses(*state_, pageGuid, surveyGuid);
}
std::shared_ptr<Collection<QAItem>> ZylService::getQAList(const std::string& pageGuid,
                                                          const std::optional<Date>& startDate,
                                                          const std::optional<Date>& endDate) {
  return kQAList(*state_, pageGuid, reports::startOf(startDate), endDate);
}
bool ZylService::updateQAItem(const std::string& itemGuid, const std::string& answer,
                              const std::string& question, const std::string& name,
                              const std::string& location) {
  return kUpdateQAItem(*state_, itemGuid, answer, question, name, location);
}
bool ZylService::updateQAItemStatus(const std::string& itemGuid, const std::string& status) {
  return kUpdateQAItemStatus(*state_, itemGuid, status);
}

}  // namespace brenmoor
