// Costs of the SOAP layer: writing request envelopes, turning project lists of the sizes the
// main service sends into records (with the peak memory that takes), and one small call over
// a kept-alive loopback connection.

#include <malloc.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "brenmoor/project.h"
#include "brenmoor/zyl_service.h"
#include "loopback_server.h"
#include "projects/project_info.h"
#include "service/fields.h"
#include "soap/answer_parser.h"
#include "soap/request.h"

namespace {

using brenmoor::ProjectInfo;
using brenmoor::service::Fields;
using brenmoor::soap::Answer;
using brenmoor::soap::AnswerLimits;
using brenmoor::soap::AnswerParser;
using brenmoor::soap::Element;
using brenmoor::soap::StringArray;

constexpr std::string_view kServiceNs = "urn:telvane-main";
constexpr std::string_view kSource = "http://127.0.0.1:1/";
constexpr std::string_view kEncodingNs = "http://schemas.xmlsoap.org/soap/encoding/";
// What libcurl hands over at a time with the transport's buffer size.
constexpr size_t kChunkBytes = 128 * 1024;

std::string envelope(std::string_view entries) {
  std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<soapenv:Envelope xmlns:soapenv=\"http://schemas.xmlsoap.org/soap/envelope/\" "
      "xmlns:xsd=\"http://www.w3.org/2001/XMLSchema\" "
      "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><soapenv:Body>";
  text += entries;
  text += "</soapenv:Body></soapenv:Envelope>";
  return text;
}

std::string dateTime(int item, int hour) {
  const std::string day = std::to_string(1 + item % 28);
  return "2024-03-" + std::string(day.size() == 1 ? "0" : "") + day + "T" +
         std::to_string(10 + hour) + ":15:00.000Z";
}

// One project as the service writes it: a multiRef of 14 typed fields in name order, four of
// them dates, two links nil.
void appendProject(std::string& out, int i) {
  const std::string n = std::to_string(i);
  out += "<multiRef id=\"id" + n + "\" soapenc:root=\"0\" soapenv:encodingStyle=\"";
  out += kEncodingNs;
  out += "\" xsi:type=\"ns2:ProjectInfo\" xmlns:soapenc=\"";
  out += kEncodingNs;
  out += "\" xmlns:ns2=\"";
  out += kServiceNs;
  out += "\">";
  out += "<created xsi:type=\"xsd:dateTime\">" + dateTime(i, 0) + "</created>";
  out += "<creator xsi:type=\"xsd:string\">ada.lovelace</creator>";
  out += "<deploymentDefID xsi:type=\"xsd:int\">" + std::to_string(i % 7) + "</deploymentDefID>";
  out += "<deploymentPath xsi:type=\"xsd:string\">/Regions/North/" + n + "</deploymentPath>";
  out += "<description xsi:type=\"xsd:string\">Survey of site " + n +
         " &amp; its surroundings, second phase</description>";
  out += "<eventEnd xsi:type=\"xsd:dateTime\">" + dateTime(i, 8) + "</eventEnd>";
  out += "<eventStart xsi:type=\"xsd:dateTime\">" + dateTime(i, 1) + "</eventStart>";
  out += "<guid xsi:type=\"xsd:string\">5F2C9A7E-41D2-4C4B-9E8A-" +
         std::string(12 - n.size(), '0') + n + "</guid>";
  out += "<hasDeployedTemplate xsi:type=\"xsd:boolean\">" + std::string(i % 3 ? "false" : "true") +
         "</hasDeployedTemplate>";
  out += "<linkedProjectGuid xsi:type=\"xsd:string\" xsi:nil=\"true\"/>";
  out += "<linkedProjectName xsi:type=\"xsd:string\" xsi:nil=\"true\"/>";
  out += "<modified xsi:type=\"xsd:dateTime\">" + dateTime(i, 9) + "</modified>";
  out += "<name xsi:type=\"xsd:string\">Project " + n + "</name>";
  out += "<notes xsi:type=\"xsd:string\">Owner asks for a review before deploying</notes>";
  out += "</multiRef>";
}

// getProjectList_Array as Axis answers it: an array of references, then one multiRef each.
std::string projectListAnswer(int items) {
  std::string entries = "<ns1:getProjectList_ArrayResponse soapenv:encodingStyle=\"" +
                        std::string(kEncodingNs) + "\" xmlns:ns1=\"" + std::string(kServiceNs) +
                        "\"><getProjectList_ArrayReturn soapenc:arrayType=\"ns2:ProjectInfo[" +
                        std::to_string(items) + "]\" xsi:type=\"soapenc:Array\" xmlns:ns2=\"" +
                        std::string(kServiceNs) + "\" xmlns:soapenc=\"" + std::string(kEncodingNs) +
                        "\">";
  entries.reserve(static_cast<size_t>(items) * 1200);
  for (int i = 0; i < items; ++i) entries += "<item href=\"#id" + std::to_string(i) + "\"/>";
  entries += "</getProjectList_ArrayReturn></ns1:getProjectList_ArrayResponse>";
  for (int i = 0; i < items; ++i) appendProject(entries, i);
  return envelope(entries);
}

// Built once per size: the 100k answer alone takes a while to write.
const std::string& cachedProjectList(int items) {
  static std::map<int, std::string> answers;
  auto found = answers.find(items);
  if (found == answers.end()) found = answers.emplace(items, projectListAnswer(items)).first;
  return found->second;
}

// What the transport does with a body of known length, then what the operation does with it.
auto parseAndMap(std::string_view body) {
  AnswerParser parser("utf-8", std::string(kSource), AnswerLimits{}, body.size());
  for (size_t at = 0; at < body.size(); at += kChunkBytes)
    parser.feed(body.substr(at, kChunkBytes));
  const Answer answer = parser.finish();
  return brenmoor::service::readList<ProjectInfo>(Fields(answer.returnNode()),
                                                  brenmoor::projects::readProjectInfo);
}

// A field of /proc/self/status in KiB, or -1.
long statusKiB(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind(field + ":", 0) == 0) return std::stol(line.substr(field.size() + 1));
  }
  return -1;
}

// How far the resident set rises above its level before `work`, in KiB, or -1 where the kernel
// cannot reset its high-water mark. Freed heap is handed back first, so memory left over from
// earlier benchmarks cannot hide the growth.
template <class Work>
long peakGrowthKiB(Work work) {
  malloc_trim(0);
  if (!(std::ofstream("/proc/self/clear_refs") << "5" << std::flush)) return -1;
  const long before = statusKiB("VmRSS");
  work();
  const long peak = statusKiB("VmHWM");
  return before < 0 || peak < 0 ? -1 : peak - before;
}

void setThroughput(benchmark::State& state, size_t bytes, int64_t items) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * items);
}

void BM_ParseAndMapProjectList(benchmark::State& state) {
  const int items = static_cast<int>(state.range(0));
  const std::string& body = cachedProjectList(items);
  // Once, untimed: the records must all be there, and the peak is that of one call.
  const long growth = peakGrowthKiB([&] {
    if (parseAndMap(body)->Count() != items) state.SkipWithError("records lost");
  });
  if (growth >= 0) state.counters["peak_rss_growth_KiB"] = static_cast<double>(growth);
  state.counters["answer_KiB"] = static_cast<double>(body.size() >> 10);
  for (auto _ : state) benchmark::DoNotOptimize(parseAndMap(body));
  setThroughput(state, body.size(), items);
}

void BM_ParseScalarAnswer(benchmark::State& state) {
  const std::string body = envelope(
      "<ns1:getProjectNameResponse soapenv:encodingStyle=\"http://schemas.xmlsoap.org/soap/"
      "encoding/\" xmlns:ns1=\"urn:telvane-main\"><getProjectNameReturn xsi:type=\"xsd:string\">"
      "Northern depots</getProjectNameReturn></ns1:getProjectNameResponse>");
  for (auto _ : state) benchmark::DoNotOptimize(Answer::parse(body, "", kSource));
  setThroughput(state, body.size(), 1);
}

void writeBenchmark(benchmark::State& state, const std::vector<Element>& elements, int items) {
  size_t bytes = 0;
  for (auto _ : state) {
    auto text = brenmoor::soap::writeEnvelope(kServiceNs, "updateProject", elements);
    bytes = text.size();
    benchmark::DoNotOptimize(text);
  }
  setThroughput(state, bytes, items);
}

void BM_WriteKeyedRequest(benchmark::State& state) {
  const std::vector<Element> elements = {
      {"key", std::string("5f2c9a7e-0001")},
      {"projectName", std::string("Northern depots")},
      {"description", std::string("Quarterly review <draft> & notes")},
      {"folder", std::string("/Regions/North")},
      {"owner", std::string("ada")},
  };
  writeBenchmark(state, elements, static_cast<int>(elements.size()));
}

void BM_WriteStringArrayRequest(benchmark::State& state) {
  StringArray names;
  for (int i = 0; i < 1000; ++i) names.push_back("Asset " + std::to_string(i));
  writeBenchmark(state, {{"key", std::string("5f2c9a7e-0002")}, {"names", names}}, 1000);
}

// A whole keyless call (envelope, POST, parse, read) on one reused connection.
void BM_GetGuidLoopback(benchmark::State& state) {
  const brenmoor::bench::LoopbackServer server(envelope(
      "<ns1:getGuidResponse soapenv:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\" "
      "xmlns:ns1=\"urn:telvane-main\"><getGuidReturn xsi:type=\"xsd:string\">"
      "5F2C9A7E-41D2-4C4B-9E8A-000000000001</getGuidReturn></ns1:getGuidResponse>"));
  brenmoor::ZylService service;
  service.ShowAlerts(false);
  service.SetServiceBaseUrl(server.baseUrl());
  for (auto _ : state) {
    if (service.getGuid().empty()) {
      state.SkipWithError(service.lastErrMsg().c_str());
      break;
    }
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()));
  // One, when the service object keeps its connection from call to call.
  state.counters["connections"] = static_cast<double>(server.connectionsAccepted());
}

BENCHMARK(BM_WriteKeyedRequest);
BENCHMARK(BM_WriteStringArrayRequest);
BENCHMARK(BM_ParseScalarAnswer);
BENCHMARK(BM_ParseAndMapProjectList)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GetGuidLoopback)->Unit(benchmark::kMicrosecond);

}  // namespace
