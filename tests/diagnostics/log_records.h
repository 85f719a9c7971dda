// Reading log files back in tests.
#ifndef ZENUTL_TESTS_DIAGNOSTICS_LOG_RECORDS_H_
#define ZENUTL_TESTS_DIAGNOSTICS_LOG_RECORDS_H_

#include <regex>
#include <string>
#include <vector>

namespace zenutl_test {

const char kLogSeparator[] = "\n------------------------------\n";
const char kStampPattern[] = R"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d\])";

struct LogRecord {
  std::string kind;      // "message", "opened", "closed", "copied" or "malformed"
  std::string level;     // of a message
  std::string location;  // of a message: "[Class::Function()]", "[Class]", "[Function()]" or ""
  std::string text;      // of a message; the backup's name of "copied"; a malformed record whole
};

// One record without its separator. The regular expression sees only the first line.
inline LogRecord ParseLogRecord(const std::string& raw) {
  static const std::regex header(
      std::string("^") + kStampPattern +
      R"(( \[(Debug|Information|Warning|Error|Critical)\]( \[.*\])?)?$)");
  static const std::string copied = "Logfile was copied to ";
  const std::string::size_type newline = raw.find('\n');
  if (newline == std::string::npos) {
    if (raw.compare(0, copied.size(), copied) == 0)
      return {"copied", "", "", raw.substr(copied.size())};
    return {"malformed", "", "", raw};
  }
  const std::string first = raw.substr(0, newline), rest = raw.substr(newline + 1);
  std::smatch match;
  if (std::regex_match(first, match, header)) {
    if (match[1].matched) {
      return {"message", match[2], match[3].matched ? match.str(3).substr(1) : "", rest};
    }
    if (rest == "Logfile opened") return {"opened", "", "", ""};
    if (rest == "Logfile closed") return {"closed", "", "", ""};
  }
  return {"malformed", "", "", raw};
}

// The records of a log file. Only a separator ends a record, so a torn tail comes out malformed.
inline std::vector<LogRecord> ParseLogFile(const std::string& content) {
  const std::string separator = kLogSeparator;
  std::vector<LogRecord> records;
  std::string::size_type start = 0, end;
  while ((end = content.find(separator, start)) != std::string::npos) {
    if (end > start) records.push_back(ParseLogRecord(content.substr(start, end - start)));
    start = end + separator.size();
  }
  if (start < content.size()) records.push_back({"malformed", "", "", content.substr(start)});
  return records;
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_DIAGNOSTICS_LOG_RECORDS_H_
