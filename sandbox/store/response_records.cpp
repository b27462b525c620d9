#include "store/response_records.h"

#include <map>

#include "store/database.h"
#include "store/record_columns.h"

namespace sandbox {
namespace {

constexpr std::int32_t kChoiceAnswer = 1;
constexpr std::int32_t kFreeAnswer = 2;

// Responses per answer; the empty key counts those left blank.
std::map<std::string, std::int32_t> counts(Statement& row) {
  std::map<std::string, std::int32_t> counted;
  while (row.step()) counted[row.text(0)] = int32_at(row, 1);
  return counted;
}

std::int32_t count_of(const std::map<std::string, std::int32_t>& counted, const std::string& key) {
  const auto found = counted.find(key);
  return found == counted.end() ? 0 : found->second;
}

Fields survey_answer(std::string text, std::int32_t type, std::int32_t row, std::int32_t count,
                     std::string guid) {
  return {{"answerTxt", std::move(text)},
          {"answerType", type},
          {"col", 1},
          {"correct", false},
          {"count", count},
          {"guid", std::move(guid)},
          {"row", row}};
}

}  // namespace

std::vector<Fields> poll_summary_records(Database& db, const ReportPage& page,
                                         const PageContent& content) {
  std::vector<Fields> questions;
  for (const PollDefinition& poll : content.polls) {
    auto row = db.prepare(
        "SELECT CAST(answer_id AS TEXT), COUNT(*) FROM poll_responses WHERE template_guid = ? "
        "AND poll_guid = ? GROUP BY answer_id");
    row.bind(page.template_guid, poll.guid);
    const auto counted = counts(row);
    std::vector<Fields> answers;
    std::int32_t responses = 0;
    for (std::size_t id = 1; id <= poll.answers.size(); ++id) {
      const std::int32_t count = count_of(counted, std::to_string(id));
      responses += count;
      answers.push_back({{"answerID", static_cast<std::int32_t>(id)},
                         {"answerTxt", poll.answers[id - 1]},
                         {"count", count}});
    }
    questions.push_back({{"answers", RecordArray{"PollAnswer", std::move(answers)}},
                         {"guid", poll.guid},
                         {"questionTxt", poll.question},
                         {"responseCount", responses}});
  }
  return questions;
}

std::vector<Fields> poll_response_records(Database& db, const ReportPage& page,
                                          const PageContent& content) {
  auto row = db.prepare(
      "SELECT poll_guid, answer_id, responded_at, viewer_guid FROM poll_responses "
      "WHERE template_guid = ? ORDER BY responded_at, id");
  row.bind(page.template_guid);
  std::vector<Fields> responses;
  while (row.step()) {
    const PollDefinition* poll = content.poll(row.text(0));
    // A poll taken off the page takes its responses out of the answers.
    if (!poll) continue;
    responses.push_back(
        {{"answerGuid", poll->answer_guid(static_cast<std::size_t>(row.integer(1)))},
         {"responseDt", time_at(row, 2)},
         {"userGuid", row.text(3)},
         {"pollGuid", poll->guid}});
  }
  return responses;
}

Fields survey_summary_record(Database& db, const ReportPage& page, const SurveyDefinition& survey) {
  std::vector<Fields> questions;
  for (const SurveyQuestionDefinition& question : survey.questions) {
    auto row = db.prepare(
        "SELECT answer_guid, COUNT(*) FROM survey_responses WHERE template_guid = ? AND "
        "survey_guid = ? AND question_guid = ? GROUP BY answer_guid");
    row.bind(page.template_guid, survey.guid, question.guid);
    const auto counted = counts(row);
    std::vector<Fields> answers;
    std::int32_t responses = 0;
    if (question.choices.empty()) {
      responses = count_of(counted, question.free_answer_guid());
      answers.push_back(survey_answer("", kFreeAnswer, 1, responses, question.free_answer_guid()));
    }
    for (std::size_t id = 1; id <= question.choices.size(); ++id) {
      const std::int32_t count = count_of(counted, question.choice_guid(id));
      responses += count;
      answers.push_back(survey_answer(question.choices[id - 1], kChoiceAnswer,
                                      static_cast<std::int32_t>(id), count,
                                      question.choice_guid(id)));
    }
    const auto rows = static_cast<std::int32_t>(answers.size());
    questions.push_back({{"answers", RecordArray{"SurveyAnswer", std::move(answers)}},
                         {"colCount", 1},
                         {"nonresponseCount", count_of(counted, "")},
                         {"questionTxt", question.text},
                         {"questionType", question.choices.empty() ? kFreeAnswer : kChoiceAnswer},
                         {"responseCount", responses},
                         {"rowCount", rows},
                         {"seqNo", question.seq_no}});
  }
  return {{"guid", survey.guid},
          {"name", survey.name},
          {"questions", RecordArray{"SurveyQuestion", std::move(questions)}}};
}

std::vector<Fields> survey_response_records(Database& db, const ReportPage& page,
                                            const SurveyDefinition& survey) {
  auto row = db.prepare(
      "SELECT answer_guid, answer_txt, guid, question_guid, responded_at, viewer_guid "
      "FROM survey_responses WHERE template_guid = ? AND survey_guid = ? AND answer_guid <> '' "
      "ORDER BY responded_at, id");
  row.bind(page.template_guid, survey.guid);
  std::vector<Fields> responses;
  while (row.step()) {
    responses.push_back({{"answerGuid", row.text(0)},
                         {"answerTxt", row.text(1)},
                         {"guid", row.text(2)},
                         {"questionGuid", row.text(3)},
                         {"responseDt", time_at(row, 4)},
                         {"userGuid", row.text(5)}});
  }
  return responses;
}

std::vector<Fields> question_records(Database& db, const ReportPage& page, const TimeRange& range) {
  auto row = db.prepare(
      "SELECT q.answer_at, q.answer_txt, q.category, (SELECT MAX(h.id) FROM page_hits h WHERE "
      "h.template_guid = q.template_guid AND h.viewer_guid = q.viewer_guid), q.guid, "
      "q.location, q.name, q.question_at, q.question_txt, q.status, q.submitter_host_name, "
      "q.submitter_ip FROM qa_items q WHERE q.template_guid = ? AND q.question_at BETWEEN ? AND ? "
      "ORDER BY q.question_at, q.rowid");
  row.bind(page.template_guid, range.from, range.to);
  std::vector<Fields> items;
  while (row.step()) {
    const auto hit = row.optional_integer(3);
    items.push_back({{"answerDt", time_or_nil_at(row, 0)},
                     {"answerTxt", row.text(1)},
                     {"category", row.text(2)},
                     {"client", hit ? hit_client(db, page.project_guid, *hit) : Value{Nil{}}},
                     {"guid", row.text(4)},
                     {"location", row.text(5)},
                     {"name", row.text(6)},
                     {"questionDt", time_at(row, 7)},
                     {"questionTxt", row.text(8)},
                     {"status", row.text(9)},
                     {"submitterHostname", row.text(10)},
                     {"submitterIP", row.text(11)}});
  }
  return items;
}

}  // namespace sandbox
