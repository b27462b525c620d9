#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

class Database;

// A viewer's answer to a poll question replaces its earlier one.
void replace_poll_response(Database& db, std::string_view template_guid, std::string_view poll_guid,
                           std::int32_t answer_id, std::string_view viewer, std::int64_t at);

// One question of a submitted survey; both texts empty when the viewer left it blank.
struct SurveyAnswerRow {
  std::string question_guid;
  std::string answer_guid;
  std::string answer_txt;
};

// A viewer's submission of a survey replaces its earlier one.
void replace_survey_responses(Database& db, std::string_view template_guid,
                              std::string_view survey_guid,
                              const std::vector<SurveyAnswerRow>& answers, std::string_view viewer,
                              std::int64_t at);

struct NewQuestion {
  std::string text;
  std::string name;
  std::string location;
  std::string category;
  std::string status;
  std::string submitter_ip;
  std::string submitter_host_name;
};

// Answers the question's guid.
std::string insert_question(Database& db, std::string_view template_guid, std::string_view viewer,
                            const NewQuestion& question, std::int64_t at);

// A question as the page shows it.
struct ShownQuestion {
  std::string name;
  std::string text;
  std::string answer;
};

// The page's latest 50 questions whose status lets them be shown, oldest first.
std::vector<ShownQuestion> shown_questions(Database& db, std::string_view template_guid);

// The account's question with that guid: its template's guid; nothing for any other.
std::optional<std::string> question_template(Database& db, std::int64_t account,
                                             std::string_view guid);

// Statuses a question may take; "new" waits for moderation, "approved" and "answered" are
// shown on the page.
bool is_question_status(std::string_view status);

// Sets the answer (and answer date) and marks the question answered; non-empty texts
// replace the question, name and location.
void answer_question(Database& db, std::string_view guid, std::string_view answer,
                     std::string_view question, std::string_view name, std::string_view location,
                     std::int64_t at);

void set_question_status(Database& db, std::string_view guid, std::string_view status);

}  // namespace sandbox
