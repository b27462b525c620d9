// File upload to a loopback sink, for comparing with other clients as whole processes:
//
//   brenmoor_upload_bench serve SECONDS   prints the sink's upload URL, serves for SECONDS
//   brenmoor_upload_bench send URL FILE   uploads FILE, prints rate and peak memory growth
//
// Run `serve` once in the background, then time `send` against, for instance,
// `curl -s -o /dev/null --data-binary @FILE URL` with /usr/bin/time -v.

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <string>
#include <thread>

#include "loopback_server.h"
#include "soap/transport.h"
#include "soap/upload.h"

namespace {

// The process's peak resident set so far, in KiB.
long peakRssKib() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6));
  }
  return -1;
}

int serve(long seconds) {
  brenmoor::bench::LoopbackServer sink("key-1");
  std::printf("%s/AssetManager/upload?key=k\n", sink.baseUrl().c_str());
  std::fflush(stdout);
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  return 0;
}

int send(const std::string& url, const std::string& path) {
  brenmoor::soap::ConnectionPool pool;
  uint64_t events = 0;
  brenmoor::soap::FileUpload upload(pool, {[&](int32_t, const std::string&) { ++events; }, [] {}});
  const long rssBefore = peakRssKib();
  const auto started = std::chrono::steady_clock::now();
  const std::string answer = upload.send(url, path);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - started;
  const long rssGrowth = peakRssKib() - rssBefore;
  if (answer.empty()) {
    std::fprintf(stderr, "upload failed: %d %s\n", upload.lastCode(), upload.lastMessage().c_str());
    return 1;
  }
  const double mib =
      static_cast<double>(events) * brenmoor::soap::FileUpload::kChunkBytes / (1024.0 * 1024.0);
  std::printf("answer %s, %llu events, %.3f s, about %.0f MiB/s, peak RSS growth %ld KiB\n",
              answer.c_str(), static_cast<unsigned long long>(events), took.count(),
              mib / took.count(), rssGrowth);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 1 ? argv[1] : "";
  try {
    if (mode == "serve" && argc == 3) return serve(std::stol(argv[2]));
    if (mode == "send" && argc == 4) return send(argv[2], argv[3]);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s\n", e.what());
    return 1;
  }
  std::fprintf(stderr, "usage: %s serve SECONDS | send URL FILE\n", argv[0]);
  return 2;
}
