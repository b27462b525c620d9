#include "viewers/simulated_viewers.h"

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "store/database.h"
#include "store/deployment_store.h"
#include "store/template_store.h"
#include "store/viewing_store.h"
#include "viewers/page_view.h"

namespace sandbox {
namespace {

constexpr std::string_view kDemoProject = "project-viewer-demo";
constexpr std::int64_t kDemoAccount = 1001;
constexpr std::int64_t kDay = 24 * 3600 * 1000;

constexpr std::array<std::string_view, 6> kUserAgents{
    "Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 (KHTML, like Gecko) "
    "Chrome/124.0.0.0 Safari/537.36",
    "Mozilla/5.0 (X11; Linux x86_64; rv:125.0) Gecko/20100101 Firefox/125.0",
    "Mozilla/5.0 (Macintosh; Intel Mac OS X 14_4) AppleWebKit/605.1.15 (KHTML, like Gecko) "
    "Version/17.4 Safari/605.1.15",
    "Mozilla/5.0 (Windows NT 10.0; Win64; x64) AppleWebKit/537.36 (KHTML, like Gecko) "
    "Chrome/124.0.0.0 Safari/537.36 Edg/124.0.2478.51",
    "Mozilla/5.0 (Linux; Android 14; Pixel 8) AppleWebKit/537.36 (KHTML, like Gecko) "
    "Chrome/124.0.0.0 Mobile Safari/537.36",
    "curl/8.5.0"};
constexpr std::array<std::string_view, 6> kLanguages{"en-US,en;q=0.9", "en-GB", "de-DE,de",
                                                     "fr-FR",          "es-ES", "ja-JP"};
constexpr std::array<std::string_view, 4> kQuestions{
    "Will the slides be shared afterwards?", "How does this compare with last year?",
    "Is there a recording?", "Who else is on the panel?"};
constexpr std::array<std::string_view, 3> kCatalogTemplates{"tpl-title-page", "tpl-qa-panel",
                                                            "tpl-audience"};

// The demo project's pages, with the project and its deployments made where missing.
std::vector<Page> demo_pages(Database& db, std::string_view base_url, std::int64_t now) {
  Transaction transaction(db);
  const bool exists = db.prepare("SELECT 1 FROM projects WHERE guid = ?").bind(kDemoProject).step();
  if (!exists) {
    db.prepare(
          "INSERT INTO projects (guid, account_id, name, description, creator_id, created_at, "
          "modified_at) SELECT ?, ?, 'Viewer Demo', 'Pages with simulated viewers', "
          "MIN(user_id), ?, ? FROM account_members WHERE account_id = ?")
        .bind(kDemoProject, kDemoAccount, now, now, kDemoAccount)
        .run();
    for (std::string_view source : kCatalogTemplates) {
      auto name = db.prepare("SELECT name FROM templates WHERE guid = ?");
      if (name.bind(source).step()) copy_into_project(db, source, kDemoProject, name.text(0));
    }
  }
  auto undeployed = db.prepare(
      "SELECT guid FROM templates WHERE project_guid = ? AND guid NOT IN "
      "(SELECT template_guid FROM deployments WHERE deployed_at IS NOT NULL) ORDER BY name");
  undeployed.bind(kDemoProject);
  std::vector<std::string> to_deploy;
  while (undeployed.step()) to_deploy.push_back(undeployed.text(0));
  for (const std::string& guid : to_deploy) deploy_template(db, guid, base_url);
  transaction.commit();

  std::vector<Page> pages;
  for (Page& page : deployed_pages(db)) {
    if (page.project_guid == kDemoProject) pages.push_back(std::move(page));
  }
  return pages;
}

class SimulatedViewer {
 public:
  SimulatedViewer(std::mt19937& random, int number, std::int64_t now)
      : random_(random), number_(number), now_(now) {
    user_agent_ = kUserAgents[pick(kUserAgents.size())];
    language_ = kLanguages[pick(kLanguages.size())];
    ip_ = "203.0.113." + std::to_string(1 + pick(254));
  }

  // One visit to the page at `at`, and what the viewer does there.
  void visit(Database& db, const Page& page, std::int64_t at) {
    const Visit visit{cookie_, user_agent_, language_, ip_, "", at};
    const OpenedPage opened = open_page(db, page, visit, fresh_id());
    // curl keeps no cookies: each of its visits is a new viewer.
    if (user_agent_.find("curl") == std::string::npos) cookie_ = opened.viewer;
    act(db, page, page_content(db, page.template_guid), opened.hit, at);
    const auto stay = static_cast<std::int64_t>(1000 * (30 + pick(900)));
    if (pick(10) < 8) leave_page(db, page, opened.hit, std::min(at + stay, now_));
  }

  std::size_t pick(std::size_t count) { return random_() % count; }

 private:
  void act(Database& db, const Page& page, const PageContent& content, const std::string& hit,
           std::int64_t at) {
    if (pick(10) < 3 && registration_required(db, page.project_guid)) {
      const std::string name = "viewer" + std::to_string(number_);
      try {
        register_viewer(db, page, hit,
                        {name + "@example.net", "Viewer", std::to_string(number_), ""});
      } catch (const FormRefused&) {
        // Registered already, on another visit or in an earlier run with the same seed.
      }
    }
    for (const PollDefinition& poll : content.polls) {
      if (pick(10) < 4) {
        answer_poll(db, page, hit, poll.guid, std::to_string(1 + pick(poll.answers.size())),
                    at + 20000);
      }
    }
    for (const SurveyDefinition& survey : content.surveys) {
      if (pick(10) >= 2) continue;
      std::map<std::string, std::string> answers;
      for (const SurveyQuestionDefinition& question : survey.questions) {
        answers["q" + std::to_string(question.seq_no)] =
            question.choices.empty() ? "More demos, please"
                                     : std::to_string(1 + pick(question.choices.size()));
      }
      answer_survey(db, page, hit, survey.guid, answers, at + 40000);
    }
    if (content.question_form && pick(100) < 15) {
      ask_question(db, page, hit, kQuestions[pick(kQuestions.size())], "", "", at + 60000);
    }
  }

  std::string fresh_id() {
    static constexpr char kHex[] = "0123456789abcdef";
    std::string id;
    for (int i = 0; i < 32; ++i) id += kHex[pick(16)];
    return id;
  }

  std::mt19937& random_;
  int number_;
  std::int64_t now_;
  std::string user_agent_;
  std::string language_;
  std::string ip_;
  std::string cookie_;
};

}  // namespace

void simulate_viewers(Database& db, int count, std::uint32_t seed, std::string_view base_url,
                      std::int64_t now) {
  const std::vector<Page> pages = demo_pages(db, base_url, now);
  if (pages.empty()) return;
  std::mt19937 random(seed);
  Transaction transaction(db);
  for (int number = 1; number <= count; ++number) {
    SimulatedViewer viewer(random, number, now);
    const int visits = 1 + static_cast<int>(viewer.pick(3));
    std::int64_t at = now - 30 * kDay + static_cast<std::int64_t>(viewer.pick(30 * 24)) * 3600000;
    for (int visit = 0; visit < visits && at < now; ++visit) {
      viewer.visit(db, pages[viewer.pick(pages.size())], at);
      at += static_cast<std::int64_t>(1 + viewer.pick(48)) * 3600000;
    }
  }
  transaction.commit();
}

}  // namespace sandbox
