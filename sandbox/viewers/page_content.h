#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

class Database;

// What a deployed template offers its viewers, read from its components: a Poll component
// ("question", and "answers" separated by "|") is one poll question; a Survey component is a
// survey named by its label whose properties are its questions in order ("Text|Choice|..."
// for a choice, plain "Text" for a free answer); a QuestionForm component ("moderated",
// "maxLength") is the question-and-answer board; TextBlock texts are shown as they are.
struct PollDefinition {
  std::string guid;  // the component's
  std::string question;
  std::vector<std::string> answers;  // answer ids are 1-based positions

  std::string answer_guid(std::size_t id) const { return guid + "-a" + std::to_string(id); }
};

struct SurveyQuestionDefinition {
  std::string guid;  // the survey's guid, "-q" and the sequence number
  std::int32_t seq_no = 0;
  std::string text;
  std::vector<std::string> choices;  // none for a free answer

  std::string choice_guid(std::size_t id) const { return guid + "-a" + std::to_string(id); }
  std::string free_answer_guid() const { return guid + "-text"; }
};

struct SurveyDefinition {
  std::string guid;  // the component's
  std::string name;
  std::vector<SurveyQuestionDefinition> questions;
};

struct QuestionFormDefinition {
  std::string label;
  bool moderated = false;  // new questions wait for a status before they are shown
  std::size_t max_length = 500;
};

struct PageContent {
  std::vector<std::string> texts;
  std::vector<PollDefinition> polls;
  std::vector<SurveyDefinition> surveys;
  std::optional<QuestionFormDefinition> question_form;

  const PollDefinition* poll(std::string_view guid) const;
  const SurveyDefinition* survey(std::string_view guid) const;
};

PageContent page_content(Database& db, std::string_view template_guid);

// A project asks its viewers to register when one of its templates carries
// <registration>required</registration> in its metadata.
bool registration_required(Database& db, std::string_view project_guid);

}  // namespace sandbox
