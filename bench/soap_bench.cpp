// Costs of the SOAP layer: writing request envelopes and parsing answers of the sizes the
// services send, with the peak memory a large parse needs.

#include <malloc.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "soap/answer.h"
#include "soap/request.h"
#include "soap_answers.h"

namespace {

using brenmoor::soap::Answer;
using brenmoor::soap::Element;
using brenmoor::soap::StringArray;

constexpr std::string_view kServiceNs = "urn:telvane-main";
constexpr std::string_view kSource = "http://127.0.0.1:1/services/Telvane";

std::string scalarAnswer() {
  return brenmoor::testing::soapEnvelope(
      "<ns1:getProjectNameResponse soapenv:encodingStyle=\"http://schemas.xmlsoap.org/soap/"
      "encoding/\" xmlns:ns1=\"urn:telvane-main\"><getProjectNameReturn xsi:type=\"xsd:string\">"
      "Northern depots</getProjectNameReturn></ns1:getProjectNameResponse>");
}

std::string record(int id) {
  const std::string n = std::to_string(id);
  return "<multiRef id=\"id" + n +
         "\" soapenc:root=\"0\" soapenv:encodingStyle=\"http://schemas.xmlsoap.org/soap/"
         "encoding/\" xsi:type=\"ns2:ProjectInfo\" xmlns:ns2=\"urn:telvane-main\">"
         "<projectID xsi:type=\"xsd:int\">" +
         n +
         "</projectID>"
         "<name xsi:type=\"xsd:string\">Project " +
         n +
         "</name>"
         "<description xsi:type=\"xsd:string\">Survey of site " +
         n +
         " &amp; surroundings"
         "</description>"
         "<created xsi:type=\"xsd:dateTime\">2024-03-01T10:00:00.000Z</created>"
         "<active xsi:type=\"xsd:boolean\">true</active>"
         "<budget xsi:type=\"xsd:double\">1250.5</budget>"
         "<ownerID xsi:type=\"xsd:int\">7</ownerID>"
         "<notes xsi:type=\"xsd:string\" xsi:nil=\"true\"/></multiRef>";
}

// An array of references followed by one multiRef per record, as list operations answer.
std::string recordListAnswer(int records) {
  std::string items;
  std::string multiRefs;
  for (int i = 0; i < records; ++i) {
    items += "<item href=\"#id" + std::to_string(i) + "\"/>";
    multiRefs += record(i);
  }
  return brenmoor::testing::soapEnvelope(
      "<ns1:getProjectsResponse soapenv:encodingStyle=\"http://schemas.xmlsoap.org/soap/"
      "encoding/\" xmlns:ns1=\"urn:telvane-main\"><getProjectsReturn soapenc:arrayType=\"ns2:"
      "ProjectInfo[" +
      std::to_string(records) +
      "]\" xsi:type=\"soapenc:Array\" "
      "xmlns:ns2=\"urn:telvane-main\">" +
      items +
      "</getProjectsReturn>"
      "</ns1:getProjectsResponse>" +
      multiRefs);
}

int recordsForSize(size_t bytes) {
  // A record with its reference is a little over 600 bytes; measure instead of trusting that.
  const size_t perRecord = recordListAnswer(2).size() - recordListAnswer(1).size();
  return static_cast<int>(bytes / perRecord);
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

void setThroughput(benchmark::State& state, size_t bytes, int items) {
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * items);
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

void parseBenchmark(benchmark::State& state, const std::string& body, int items,
                    bool withPeakMemory) {
  if (withPeakMemory) {
    const long growth =
        peakGrowthKiB([&] { benchmark::DoNotOptimize(Answer::parse(body, "", kSource)); });
    if (growth >= 0) state.counters["peak_rss_growth_KiB"] = static_cast<double>(growth);
  }
  for (auto _ : state) benchmark::DoNotOptimize(Answer::parse(body, "", kSource));
  setThroughput(state, body.size(), items);
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

void BM_ParseScalarAnswer(benchmark::State& state) {
  parseBenchmark(state, scalarAnswer(), 1, false);
}

void BM_ParseRecordList(benchmark::State& state) {
  parseBenchmark(state, recordListAnswer(1000), 1000, true);
}

void BM_ParseFiveMegabytes(benchmark::State& state) {
  const int records = recordsForSize(5u << 20);
  parseBenchmark(state, recordListAnswer(records), records, true);
}

BENCHMARK(BM_WriteKeyedRequest);
BENCHMARK(BM_WriteStringArrayRequest);
BENCHMARK(BM_ParseScalarAnswer);
BENCHMARK(BM_ParseRecordList)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseFiveMegabytes)->Unit(benchmark::kMillisecond);

}  // namespace
