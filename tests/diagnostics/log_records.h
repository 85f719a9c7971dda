// Reading log files back in tests: split into records and recognise each kind.
#ifndef ZENUTL_TESTS_DIAGNOSTICS_LOG_RECORDS_H_
#define ZENUTL_TESTS_DIAGNOSTICS_LOG_RECORDS_H_

#include <regex>
#include <string>
#include <vector>

namespace zenutl_test {

const char kLogSeparator[] = "\n------------------------------\n";

// The records of a log file, without their separators. The file must end with a separator;
// otherwise the last record comes back prefixed with "UNTERMINATED:" so tests can see it. An
// opening record (which begins with a separator) yields no empty record before it.
inline std::vector<std::string> SplitLogRecords(const std::string& content) {
  std::vector<std::string> records;
  const std::string separator = kLogSeparator;
  std::string::size_type start = 0;
  while (start < content.size()) {
    const std::string::size_type end = content.find(separator, start);
    if (end == std::string::npos) {
      records.push_back("UNTERMINATED:" + content.substr(start));
      break;
    }
    if (end > start) records.push_back(content.substr(start, end - start));
    start = end + separator.size();
  }
  return records;
}

const char kStampPattern[] = R"(\[\d{4}-\d{2}-\d{2} \d{2}:\d{2}:\d{2}\.\d{3}[+-]\d{2}:\d{2}\])";

struct LogRecord {
  enum Kind { kMessage, kOpened, kClosed, kCopied, kMalformed };
  Kind kind = kMalformed;
  std::string level;     // messages: "Debug" ... "Critical"
  std::string location;  // messages: "[Class::Function()]" or "" when there is none
  std::string text;      // messages: the text; copies: the backup name
};

// Looks at the first line with a pattern and takes the rest as it is, which keeps the regular
// expressions away from long texts.
inline LogRecord ParseLogRecord(const std::string& record) {
  static const std::regex header(
      std::string("^") + kStampPattern +
      R"(( \[(Debug|Information|Warning|Error|Critical)\]( \[[^\]]*\])?)?$)");
  static const std::string copied = "Logfile was copied to ";
  LogRecord parsed;
  if (record.compare(0, copied.size(), copied) == 0) {
    if (record.find('\n') == std::string::npos) {
      parsed.kind = LogRecord::kCopied;
      parsed.text = record.substr(copied.size());
    }
    return parsed;
  }
  const std::string::size_type newline = record.find('\n');
  if (newline == std::string::npos) return parsed;
  const std::string first = record.substr(0, newline);
  const std::string rest = record.substr(newline + 1);
  std::smatch match;
  if (!std::regex_match(first, match, header)) return parsed;
  if (match[1].matched) {
    parsed.kind = LogRecord::kMessage;
    parsed.level = match[2];
    parsed.location = match[3].matched ? std::string(match[3]).substr(1) : std::string();
    parsed.text = rest;
  } else if (rest == "Logfile opened") {
    parsed.kind = LogRecord::kOpened;
  } else if (rest == "Logfile closed") {
    parsed.kind = LogRecord::kClosed;
  }
  return parsed;
}

inline std::vector<LogRecord> ParseLogFile(const std::string& content) {
  std::vector<LogRecord> parsed;
  for (const std::string& record : SplitLogRecords(content)) {
    parsed.push_back(ParseLogRecord(record));
  }
  return parsed;
}

}  // namespace zenutl_test

#endif  // ZENUTL_TESTS_DIAGNOSTICS_LOG_RECORDS_H_
