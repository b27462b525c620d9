#include "store/response_store.h"

#include <array>

#include "crypto/random.h"
#include "store/database.h"

namespace sandbox {

void replace_poll_response(Database& db, std::string_view template_guid, std::string_view poll_guid,
                           std::int32_t answer_id, std::string_view viewer, std::int64_t at) {
  Transaction transaction(db);
  db.prepare(
        "DELETE FROM poll_responses WHERE template_guid = ? AND poll_guid = ? AND viewer_guid = ?")
      .bind(template_guid, poll_guid, viewer)
      .run();
  db.prepare(
        "INSERT INTO poll_responses (template_guid, poll_guid, answer_id, viewer_guid, "
        "responded_at) VALUES (?, ?, ?, ?, ?)")
      .bind(template_guid, poll_guid, std::int64_t{answer_id}, viewer, at)
      .run();
  transaction.commit();
}

void replace_survey_responses(Database& db, std::string_view template_guid,
                              std::string_view survey_guid,
                              const std::vector<SurveyAnswerRow>& answers, std::string_view viewer,
                              std::int64_t at) {
  Transaction transaction(db);
  db.prepare(
        "DELETE FROM survey_responses WHERE template_guid = ? AND survey_guid = ? AND "
        "viewer_guid = ?")
      .bind(template_guid, survey_guid, viewer)
      .run();
  for (const SurveyAnswerRow& answer : answers) {
    db.prepare(
          "INSERT INTO survey_responses (guid, template_guid, survey_guid, question_guid, "
          "answer_guid, answer_txt, viewer_guid, responded_at) VALUES (?, ?, ?, ?, ?, ?, ?, ?)")
        .bind(random_guid(), template_guid, survey_guid, answer.question_guid, answer.answer_guid,
              answer.answer_txt, viewer, at)
        .run();
  }
  transaction.commit();
}

std::string insert_question(Database& db, std::string_view template_guid, std::string_view viewer,
                            const NewQuestion& question, std::int64_t at) {
  const std::string guid = random_guid();
  db.prepare(
        "INSERT INTO qa_items (guid, template_guid, viewer_guid, question_at, question_txt, "
        "name, location, category, status, submitter_ip, submitter_host_name) "
        "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
      .bind(guid, template_guid, viewer, at, question.text, question.name, question.location,
            question.category, question.status, question.submitter_ip, question.submitter_host_name)
      .run();
  return guid;
}

std::vector<ShownQuestion> shown_questions(Database& db, std::string_view template_guid) {
  auto row = db.prepare(
      "SELECT name, question_txt, answer_txt FROM (SELECT rowid, * FROM qa_items WHERE "
      "template_guid = ? AND status IN ('approved', 'answered') ORDER BY question_at DESC, "
      "rowid DESC LIMIT 50) ORDER BY question_at, rowid");
  row.bind(template_guid);
  std::vector<ShownQuestion> shown;
  while (row.step()) shown.push_back({row.text(0), row.text(1), row.text(2)});
  return shown;
}

std::optional<std::string> question_template(Database& db, std::int64_t account,
                                             std::string_view guid) {
  auto row = db.prepare(
      "SELECT q.template_guid FROM qa_items q JOIN templates t ON t.guid = q.template_guid "
      "JOIN projects p ON p.guid = t.project_guid WHERE q.guid = ? AND p.account_id = ?");
  if (!row.bind(guid, account).step()) return std::nullopt;
  return row.text(0);
}

bool is_question_status(std::string_view status) {
  constexpr std::array<std::string_view, 5> kStatuses{"new", "approved", "answered", "rejected",
                                                      "archived"};
  for (std::string_view known : kStatuses) {
    if (status == known) return true;
  }
  return false;
}

void answer_question(Database& db, std::string_view guid, std::string_view answer,
                     std::string_view question, std::string_view name, std::string_view location,
                     std::int64_t at) {
  db.prepare(
        "UPDATE qa_items SET answer_txt = ?1, answer_at = ?2, status = 'answered', "
        "question_txt = CASE WHEN ?3 = '' THEN question_txt ELSE ?3 END, "
        "name = CASE WHEN ?4 = '' THEN name ELSE ?4 END, "
        "location = CASE WHEN ?5 = '' THEN location ELSE ?5 END WHERE guid = ?6")
      .bind(answer, at, question, name, location, guid)
      .run();
}

void set_question_status(Database& db, std::string_view guid, std::string_view status) {
  db.prepare("UPDATE qa_items SET status = ? WHERE guid = ?").bind(status, guid).run();
}

}  // namespace sandbox
