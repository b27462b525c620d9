#include "viewers/page_content.h"

#include <algorithm>
#include <charconv>
#include <pugixml.hpp>

#include "store/database.h"

namespace sandbox {
namespace {

std::vector<std::string> split_choices(std::string_view text) {
  std::vector<std::string> pieces;
  while (true) {
    const auto bar = text.find('|');
    pieces.emplace_back(text.substr(0, bar));
    if (bar == std::string_view::npos) return pieces;
    text.remove_prefix(bar + 1);
  }
}

struct Property {
  std::string name;
  std::string value;
};

struct Component {
  std::string guid;
  std::string class_name;
  std::string label;
  std::vector<Property> properties;

  std::string property(std::string_view name) const {
    const auto found = std::find_if(properties.begin(), properties.end(),
                                    [&](const Property& p) { return p.name == name; });
    return found == properties.end() ? std::string() : found->value;
  }
};

std::vector<Component> components_of(Database& db, std::string_view template_guid) {
  auto row = db.prepare(
      "SELECT c.guid, c.class_name, c.label, p.name, p.value FROM components c "
      "LEFT JOIN component_properties p ON p.component_guid = c.guid "
      "WHERE c.template_guid = ? ORDER BY c.position, p.position");
  row.bind(template_guid);
  std::vector<Component> components;
  while (row.step()) {
    if (components.empty() || components.back().guid != row.text(0)) {
      components.push_back({row.text(0), row.text(1), row.text(2), {}});
    }
    if (row.optional_text(3)) components.back().properties.push_back({row.text(3), row.text(4)});
  }
  return components;
}

PollDefinition poll_of(const Component& component) {
  return {component.guid, component.property("question"),
          split_choices(component.property("answers"))};
}

SurveyDefinition survey_of(const Component& component) {
  SurveyDefinition survey{component.guid, component.label, {}};
  for (const Property& property : component.properties) {
    std::vector<std::string> pieces = split_choices(property.value);
    const auto seq_no = static_cast<std::int32_t>(survey.questions.size() + 1);
    SurveyQuestionDefinition question{
        component.guid + "-q" + std::to_string(seq_no), seq_no, pieces.front(), {}};
    question.choices.assign(pieces.begin() + 1, pieces.end());
    survey.questions.push_back(std::move(question));
  }
  return survey;
}

QuestionFormDefinition question_form_of(const Component& component) {
  QuestionFormDefinition form{component.label, component.property("moderated") == "true", 500};
  const std::string max_length = component.property("maxLength");
  std::size_t parsed = 0;
  const auto [end, error] =
      std::from_chars(max_length.data(), max_length.data() + max_length.size(), parsed);
  if (error == std::errc() && parsed > 0 && parsed <= 4000) form.max_length = parsed;
  return form;
}

}  // namespace

const PollDefinition* PageContent::poll(std::string_view guid) const {
  const auto found = std::find_if(polls.begin(), polls.end(),
                                  [&](const PollDefinition& p) { return p.guid == guid; });
  return found == polls.end() ? nullptr : &*found;
}

const SurveyDefinition* PageContent::survey(std::string_view guid) const {
  const auto found = std::find_if(surveys.begin(), surveys.end(),
                                  [&](const SurveyDefinition& s) { return s.guid == guid; });
  return found == surveys.end() ? nullptr : &*found;
}

PageContent page_content(Database& db, std::string_view template_guid) {
  PageContent content;
  for (const Component& component : components_of(db, template_guid)) {
    if (component.class_name == "TextBlock") content.texts.push_back(component.property("text"));
    if (component.class_name == "Poll") content.polls.push_back(poll_of(component));
    if (component.class_name == "Survey") content.surveys.push_back(survey_of(component));
    if (component.class_name == "QuestionForm" && !content.question_form) {
      content.question_form = question_form_of(component);
    }
  }
  return content;
}

bool registration_required(Database& db, std::string_view project_guid) {
  auto row = db.prepare("SELECT metadata_xml FROM templates WHERE project_guid = ?");
  row.bind(project_guid);
  while (row.step()) {
    pugi::xml_document metadata;
    const std::string text = row.text(0);
    if (!metadata.load_buffer(text.data(), text.size())) continue;
    const pugi::xpath_node registration = metadata.select_node("//registration");
    if (registration && std::string_view(registration.node().text().get()) == "required") {
      return true;
    }
  }
  return false;
}

}  // namespace sandbox
