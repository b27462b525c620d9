// Subcommands about the viewers of deployed pages: hits, view time, viewers, polls, surveys and
// the question-and-answer board.

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <optional>

#include "commands.h"
#include "records_json.h"

namespace brenmoor::cli {
namespace {

using nlohmann::json;

struct Args {
  std::string page, survey, item, text, status;
  std::optional<Date> from, to;
};

// A bad date is a usage error before anything is sent.
const CLI::Validator kDateCheck(
    [](std::string& text) {
      return Date::parse(text) ? std::string()
                               : "not a date: use yyyy-mm-dd or \"yyyy-mm-dd hh:mm:ss\"";
    },
    "DATE");

void addPage(CLI::App& command, const std::shared_ptr<Args>& args) {
  command.add_option("page", args->page, "Page: template or deployment guid")->required();
}

void addRange(CLI::App& command, const std::shared_ptr<Args>& args) {
  command
      .add_option_function<std::string>(
          "--from", [args](const std::string& text) { args->from = Date::parse(text); },
          "From this local date or time (default: the beginning)")
      ->check(kDateCheck);
  command
      .add_option_function<std::string>(
          "--to", [args](const std::string& text) { args->to = Date::parse(text); },
          "Up to this local date or time, included (default: now)")
      ->check(kDateCheck);
}

// Tables show a viewer in a few columns; JSON keeps the whole Client.
json viewerColumns(const std::shared_ptr<Client>& client) {
  json row = json::object();
  if (!client) return row;
  row["guid"] = client->guid();
  row["email"] = client->email();
  row["ip"] = client->userIP();
  if (const auto details = client->details()) {
    row["browser"] = details->browserType() + " " + std::to_string(details->browserVersion());
    row["os"] = details->operatingSystem();
    row["language"] = details->language();
  }
  return row;
}

void printHits(const OutputMode& mode, int total, int unique, const Collection<PageHitInfo>& hits) {
  std::map<std::string, int> perDay;
  for (const auto& hit : hits) ++perDay[hit->pagehitDate().toString().substr(0, 10)];
  if (mode.json) {
    auto days = json::array();
    for (const auto& [day, count] : perDay) days.push_back({{"date", day}, {"hits", count}});
    return printRecord(mode, {{"total", total}, {"unique", unique}, {"perDay", days}}, {});
  }
  if (!mode.terminal) {
    std::cout << "total\t" << total << "\nunique\t" << unique << '\n';
    for (const auto& [day, count] : perDay) std::cout << day << '\t' << count << '\n';
    return;
  }
  std::cout << "Hits: " << total << " (" << unique << " unique)\n";
  constexpr int kWidth = 40;
  int most = 1;
  for (const auto& entry : perDay) most = std::max(most, entry.second);
  for (const auto& [day, count] : perDay) {
    const int length = std::max(1, count * kWidth / most);
    std::cout << day << "  " << std::string(static_cast<size_t>(length), '#') << ' ' << count
              << '\n';
  }
}

void addReports(CLI::App& app, Context& context, const std::shared_ptr<Args>& args) {
  auto* reports = app.add_subcommand("reports", "What the viewers of a deployed page did");
  reports->fallthrough();
  reports->require_subcommand(1);
  reports->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 reports hits PAGE --from 2024-05-01\n"
      "  brenmoor --profile work --account 1001 reports viewers PAGE --from 2024-05-01 "
      "--to '2024-05-31 18:00:00' --json\n"
      "PAGE is a project template's guid or its deployment guid; dates are local.");

  auto* hits = reports->add_subcommand(
      "hits", "Total and unique hits, and hits per day (a bar chart on a terminal)");
  auto* time = reports->add_subcommand(
      "time", "Seconds of the closed visits, and seconds limited by the page's duration");
  auto* viewers = reports->add_subcommand("viewers", "Each hit with its viewer's details");
  auto* participants = reports->add_subcommand(
      "participants", "Viewers who voted, answered a survey or asked a question");
  auto* registrants = reports->add_subcommand("registrants", "Registered viewers");
  for (auto* command : {hits, time, viewers, participants, registrants}) {
    addPage(*command, args);
    addRange(*command, args);
  }

  hits->callback(signedIn(context, [&context, args](ZylService& service) {
    const Args& a = *args;
    const CallWatch watch(service);
    const int total = service.getTotalPageHits(a.page, a.from, a.to);
    const int unique = service.getUniquePageHits(a.page, a.from, a.to);
    const auto list = service.getPageHitList(a.page, a.from, a.to);
    if (!list || watch.failed()) return void(context.status = failed(service, "reading hits"));
    printHits(context.output, total, unique, *list);
  }));

  time->callback(signedIn(context, [&context, args](ZylService& service) {
    const Args& a = *args;
    const CallWatch watch(service);
    const int total = service.getTotalPageViewTime(a.page, a.from, a.to);
    const double limited = service.getLimitedPageViewTime(a.page, a.from, a.to);
    if (watch.failed()) return void(context.status = failed(service, "reading view time"));
    printRecord(context.output, {{"total", total}, {"limited", limited}}, {"total", "limited"});
  }));

  viewers->callback(signedIn(context, [&context, args](ZylService& service) {
    const auto list = service.getPageHitList(args->page, args->from, args->to);
    if (!list) return void(context.status = failed(service, "listing hits"));
    if (context.output.json) return printList(context.output, toJson(*list), {});
    auto rows = json::array();
    for (const auto& hit : *list) {
      json row = viewerColumns(hit->Client());
      row["date"] = hit->pagehitDate().toString();
      row["seconds"] = hit->timeSpent();
      row["closed"] = hit->closed();
      rows.push_back(row);
    }
    printList(context.output, rows,
              {"date", "seconds", "closed", "ip", "browser", "os", "language", "guid"});
  }));

  const auto viewerList = [&context, args](bool registered) {
    return signedIn(context, [&context, args, registered](ZylService& service) {
      const Args& a = *args;
      const auto list = registered ? service.getRegistrantList(a.page, a.from, a.to)
                                   : service.getParticipantList(a.page, a.from, a.to);
      if (!list) return void(context.status = failed(service, "listing viewers"));
      if (context.output.json) return printList(context.output, toJson(*list), {});
      auto rows = json::array();
      for (const auto& viewer : *list) {
        json row = viewerColumns(viewer->Client());
        row["firstViewed"] = viewer->firstViewed().toString();
        row["lastViewed"] = viewer->lastViewed().toString();
        row["seconds"] = viewer->totalTimeOnPage();
        row["participated"] = viewer->participated();
        row["registered"] = viewer->registered();
        rows.push_back(row);
      }
      printList(
          context.output, rows,
          {"guid", "email", "firstViewed", "lastViewed", "seconds", "participated", "registered"});
    });
  };
  participants->callback(viewerList(false));
  registrants->callback(viewerList(true));
}

void addPolls(CLI::App& app, Context& context, const std::shared_ptr<Args>& args) {
  auto* polls =
      app.add_subcommand("polls", "A page's poll results: one line per answer with its votes");
  polls->fallthrough();
  polls->footer("Example: brenmoor --profile work --account 1001 polls PAGE --json");
  addPage(*polls, args);
  polls->callback(signedIn(context, [&context, args](ZylService& service) {
    const auto questions = service.getPollSummaryResults(args->page);
    if (!questions) return void(context.status = failed(service, "reading polls"));
    if (context.output.json) return printList(context.output, toJson(*questions), {});
    auto rows = json::array();
    for (const auto& question : *questions) {
      if (!question->answers()) continue;
      for (const auto& answer : *question->answers()) {
        rows.push_back({{"question", question->questionTxt()},
                        {"answer", answer->answerTxt()},
                        {"votes", answer->count()}});
      }
    }
    printList(context.output, rows, {"question", "answer", "votes"});
  }));
}

void addSurveys(CLI::App& app, Context& context, const std::shared_ptr<Args>& args) {
  auto* surveys = app.add_subcommand(
      "surveys", "A page's surveys; with SURVEY, its questions and the counts of each answer");
  surveys->fallthrough();
  surveys->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 surveys PAGE\n"
      "  brenmoor --profile work --account 1001 surveys PAGE SURVEY --json");
  addPage(*surveys, args);
  surveys->add_option("survey", args->survey, "Survey guid");
  surveys->callback(signedIn(context, [&context, args](ZylService& service) {
    if (args->survey.empty()) {
      const auto list = service.getSurveyList(args->page);
      if (!list) return void(context.status = failed(service, "listing surveys"));
      return printList(context.output, toJson(*list), {"guid", "name"});
    }
    const auto survey = service.getSurveySummary(args->page, args->survey);
    if (!survey) return void(context.status = failed(service, "reading the survey"));
    if (context.output.json) return printRecord(context.output, toJson(*survey), {});
    auto rows = json::array();
    const auto questions = survey->questions();
    for (const auto& question : questions ? *questions : Collection<SurveyQuestion>()) {
      if (!question->answers()) continue;
      for (const auto& answer : *question->answers()) {
        rows.push_back({{"question", question->questionTxt()},
                        {"answer", answer->answerTxt()},
                        {"count", answer->count()}});
      }
    }
    printList(context.output, rows, {"question", "answer", "count"});
  }));
}

void addQuestions(CLI::App& app, Context& context, const std::shared_ptr<Args>& args) {
  auto* qa = app.add_subcommand("qa", "A page's questions and answers; answer or moderate them");
  qa->fallthrough();
  qa->footer(
      "Examples:\n"
      "  brenmoor --profile work --account 1001 qa PAGE --from 2024-05-01\n"
      "  brenmoor --profile work --account 1001 qa answer ITEM 'Yes, the slides will be "
      "online.'\n"
      "  brenmoor --profile work --account 1001 qa status ITEM archived");
  qa->add_option("page", args->page, "Page: template or deployment guid; lists its questions");
  addRange(*qa, args);

  auto* answer = qa->add_subcommand("answer", "Answer a question (its status becomes answered)");
  answer->add_option("item", args->item, "Question guid")->required();
  answer->add_option("text", args->text, "The answer")->required();
  answer->callback(signedIn(context, [&context, args](ZylService& service) {
    if (!service.updateQAItem(args->item, args->text)) {
      context.status = failed(service, "answering the question");
    }
  }));

  auto* status = qa->add_subcommand("status",
                                    "Set a question's status; pages show approved "
                                    "and answered ones");
  status->add_option("item", args->item, "Question guid")->required();
  status->add_option("status", args->status)
      ->required()
      ->check(CLI::IsMember({"new", "approved", "answered", "rejected", "archived"}));
  status->callback(signedIn(context, [&context, args](ZylService& service) {
    if (!service.updateQAItemStatus(args->item, args->status)) {
      context.status = failed(service, "setting the status");
    }
  }));

  const auto list = signedIn(context, [&context, args](ZylService& service) {
    const auto items = service.getQAList(args->page, args->from, args->to);
    if (!items) return void(context.status = failed(service, "listing questions"));
    printList(context.output, toJson(*items),
              {"guid", "status", "name", "questionTxt", "answerTxt"});
  });
  qa->callback([qa, args, &context, list] {
    // The subcommands' own callbacks have done their work.
    if (!qa->get_subcommands().empty()) return;
    if (args->page.empty()) {
      return void(context.status = usageError("qa: give a PAGE, or answer or status"));
    }
    list();
  });
}

}  // namespace

void addReportCommands(CLI::App& app, Context& context) {
  auto args = std::make_shared<Args>();
  addReports(app, context, args);
  addPolls(app, context, args);
  addSurveys(app, context, args);
  addQuestions(app, context, args);
}

}  // namespace brenmoor::cli
