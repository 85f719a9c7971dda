// LumoDateTime's text in the default format against Boost.Date_Time's own facets on the same
// few thousand values: ToUTCString beside time_facet, ParseExact beside time_input_facet.
//
// "yyyy-MM-dd HH:mm:sseee" corresponds to Boost's "%Y-%m-%d %H:%M:%S%F" (the fraction only when
// it is not zero). The Boost side reuses one imbued stream, its fastest ordinary use. ParseExact
// does more than Boost's parser: it reads the current local year for the defaults and converts
// the local fields to UTC, so the zone is fixed to one with daylight saving.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <time.h>

#include <boost/date_time/posix_time/posix_time.hpp>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "zenutl/lumo_date_time.h"

namespace {

const char kZnFormat[] = "yyyy-MM-dd HH:mm:sseee";
const char kBoostFormat[] = "%Y-%m-%d %H:%M:%S%F";

// Points from 1990 to 2030, whole milliseconds, a quarter of them without a fraction.
std::vector<boost::posix_time::ptime> MakeTimes() {
  setenv("TZ", "Europe/Stockholm", 1);
  tzset();
  std::mt19937 random(2010);
  std::uniform_int_distribution<long long> second(631152000LL, 1893456000LL);
  std::uniform_int_distribution<int> millisecond(1, 999);
  std::vector<boost::posix_time::ptime> times;
  for (int i = 0; i < 4000; ++i) {
    const int fraction = i % 4 == 0 ? 0 : millisecond(random);
    times.push_back(boost::posix_time::from_time_t(static_cast<time_t>(second(random))) +
                    boost::posix_time::milliseconds(fraction));
  }
  return times;
}

const std::vector<boost::posix_time::ptime>& Times() {
  static const std::vector<boost::posix_time::ptime> times = MakeTimes();
  return times;
}

const std::vector<std::string>& Texts() {
  static const std::vector<std::string> texts = [] {
    std::vector<std::string> made;
    for (const auto& time : Times()) made.push_back(ZnTimeUtl::LumoDateTime(time).ToUTCString(""));
    return made;
  }();
  return texts;
}

void BM_LumoDateTimeToUTCString(benchmark::State& state) {
  std::vector<ZnTimeUtl::LumoDateTime> values(Times().begin(), Times().end());
  for (auto _ : state) {
    for (const auto& value : values) {
      std::string text = value.ToUTCString("");
      benchmark::DoNotOptimize(text);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(values.size()));
}
BENCHMARK(BM_LumoDateTimeToUTCString);

void BM_BoostTimeFacetFormat(benchmark::State& state) {
  const auto& times = Times();
  std::ostringstream out;
  out.imbue(std::locale(out.getloc(), new boost::posix_time::time_facet(kBoostFormat)));
  for (auto _ : state) {
    for (const auto& time : times) {
      out.str(std::string());
      out << time;
      std::string text = out.str();
      benchmark::DoNotOptimize(text);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(times.size()));
}
BENCHMARK(BM_BoostTimeFacetFormat);

void BM_LumoDateTimeParseExact(benchmark::State& state) {
  const auto& texts = Texts();
  const std::string format = kZnFormat;
  for (auto _ : state) {
    for (const auto& text : texts) {
      ZnTimeUtl::LumoDateTime parsed = ZnTimeUtl::LumoDateTime::ParseExact(text, format);
      benchmark::DoNotOptimize(parsed);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(texts.size()));
}
BENCHMARK(BM_LumoDateTimeParseExact);

void BM_BoostTimeInputFacetParse(benchmark::State& state) {
  const auto& texts = Texts();
  std::istringstream in;
  in.imbue(std::locale(in.getloc(), new boost::posix_time::time_input_facet(kBoostFormat)));
  for (auto _ : state) {
    for (const auto& text : texts) {
      in.clear();
      in.str(text);
      boost::posix_time::ptime parsed;
      in >> parsed;
      benchmark::DoNotOptimize(parsed);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(texts.size()));
}
BENCHMARK(BM_BoostTimeInputFacetParse);

}  // namespace
