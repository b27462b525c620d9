#include "services/lookups.h"
#include "services/reports_operations.h"
#include "soap/faults.h"
#include "store/record_columns.h"
#include "store/response_records.h"
#include "store/response_store.h"
#include "viewers/viewer_text.h"

namespace sandbox {
namespace {

const SurveyDefinition& require_survey(const Call& call, const PageContent& content) {
  const SurveyDefinition* survey = content.survey(call.args.string("surveyGuid"));
  if (!survey)
    throw ApplicationFault("NoSuchSurvey", "The page has no survey with that guid", kNotFoundFault);
  return *survey;
}

void get_poll_summary_results(Call& call) {
  const ReportPage page = require_report_page(call);
  call.reply.records("PollQuestion", poll_summary_records(
                                         call.db, page, page_content(call.db, page.template_guid)));
}

void get_poll_response_list(Call& call) {
  const ReportPage page = require_report_page(call);
  call.reply.records("PollResponse", poll_response_records(
                                         call.db, page, page_content(call.db, page.template_guid)));
}

void get_survey_list(Call& call) {
  const ReportPage page = require_report_page(call);
  std::vector<Fields> surveys;
  for (const SurveyDefinition& survey : page_content(call.db, page.template_guid).surveys) {
    surveys.push_back({{"guid", survey.guid}, {"name", survey.name}});
  }
  call.reply.records("Survey", std::move(surveys));
}

void get_survey_summary(Call& call) {
  const ReportPage page = require_report_page(call);
  const PageContent content = page_content(call.db, page.template_guid);
  call.reply.record("Survey", survey_summary_record(call.db, page, require_survey(call, content)));
}

void get_survey_response_list(Call& call) {
  const ReportPage page = require_report_page(call);
  const PageContent content = page_content(call.db, page.template_guid);
  call.reply.records("SurveyResponse",
                     survey_response_records(call.db, page, require_survey(call, content)));
}

void get_qa_list(Call& call) {
  const ReportPage page = require_report_page(call);
  call.reply.records("QAItem", question_records(call.db, page, report_range(call)));
}

// False for a question that is none of the account's.
void update_qa_item(Call& call) {
  const std::string guid = call.args.string("guid");
  const std::string answer = viewer_text(call.args.string("answer"), 4000, true);
  const std::string question = viewer_text(call.args.string("question"), 4000, true);
  const std::string name = viewer_text(call.args.string("name"), 100);
  const std::string location = viewer_text(call.args.string("location"), 100);
  const bool exists = question_template(call.db, call.account(), guid).has_value();
  if (exists) answer_question(call.db, guid, answer, question, name, location, now_ms());
  call.reply.scalar(exists);
}

void update_qa_item_status(Call& call) {
  const std::string guid = call.args.string("guid");
  const std::string status = call.args.string("status");
  if (!is_question_status(status)) {
    throw ApplicationFault("InvalidStatus",
                           "A status is one of new, approved, answered, rejected and archived");
  }
  const bool exists = question_template(call.db, call.account(), guid).has_value();
  if (exists) set_question_status(call.db, guid, status);
  call.reply.scalar(exists);
}

constexpr Operation kOperations[] = {
    {"getPollSummaryResults_Array", Access::cookie, get_poll_summary_results,
     "pageGuid -> PollQuestion[]"},
    {"getPollResponseList_Array", Access::cookie, get_poll_response_list,
     "pageGuid -> PollResponse[]"},
    {"getSurveyList_Array", Access::cookie, get_survey_list, "pageGuid -> Survey[]"},
    {"getSurveySummary", Access::cookie, get_survey_summary, "pageGuid surveyGuid -> Survey"},
    {"getSurveyResponseList_Array", Access::cookie, get_survey_response_list,
     "pageGuid surveyGuid -> SurveyResponse[]"},
    {"getQAList_Array", Access::cookie, get_qa_list,
     "pageGuid startDate:dateTime endDate:dateTime -> QAItem[]"},
    {"updateQAItem", Access::cookie, update_qa_item,
     "guid answer question name location -> boolean"},
    {"updateQAItemStatus", Access::cookie, update_qa_item_status, "guid status -> boolean"},
};

}  // namespace

std::span<const Operation> poll_operations() {
  return kOperations;
}

}  // namespace sandbox
