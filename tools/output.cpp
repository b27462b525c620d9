#include "output.h"

#include <algorithm>
#include <cmath>
#include <iostream>

namespace brenmoor::cli {
namespace {

using nlohmann::json;

void printJson(const json& value) {
  // Replacing invalid UTF-8 instead of throwing: the texts come from the server.
  std::cout << value.dump(2, ' ', false, json::error_handler_t::replace) << '\n';
}

std::string cell(const json& value) {
  if (value.is_string()) return value.get<std::string>();
  if (value.is_null()) return "";
  // Whole amounts (quotas send doubles) read better without ".0" in a table.
  if (value.is_number_float()) {
    const double number = value.get<double>();
    if (std::abs(number) < 1e15 && number == std::trunc(number)) {
      return std::to_string(static_cast<long long>(number));
    }
  }
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

std::string cellOf(const json& item, const std::string& column) {
  if (!item.is_object()) return cell(item);
  const auto found = item.find(column);
  return found == item.end() ? "" : cell(*found);
}

// Columns are as wide as their widest cell, counted in UTF-8 characters.
size_t width(const std::string& text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

void printRows(const OutputMode& mode, const std::vector<std::vector<std::string>>& rows) {
  std::vector<size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], width(row[i]));
  }
  for (const auto& row : rows) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
      if (i > 0) line += mode.terminal ? "  " : "\t";
      line += row[i];
      if (mode.terminal && i + 1 < row.size()) line.append(widths[i] - width(row[i]), ' ');
    }
    std::cout << line << '\n';
  }
}

}  // namespace

void printList(const OutputMode& mode, const json& items, const std::vector<std::string>& columns) {
  if (mode.json) return printJson(items);
  std::vector<std::vector<std::string>> rows;
  const bool records = !items.empty() && items.front().is_object();
  if (mode.terminal && records) rows.push_back(columns);
  for (const auto& item : items) {
    if (!item.is_object()) {
      rows.push_back({cell(item)});
      continue;
    }
    auto& row = rows.emplace_back();
    for (const auto& column : columns) row.push_back(cellOf(item, column));
  }
  printRows(mode, rows);
}

void printRecord(const OutputMode& mode, const json& record,
                 const std::vector<std::string>& columns) {
  if (mode.json) return printJson(record);
  std::vector<std::string> header, row;
  for (const auto& column : columns) {
    if (!record.contains(column)) continue;
    header.push_back(column);
    row.push_back(cellOf(record, column));
  }
  std::vector<std::vector<std::string>> rows;
  if (mode.terminal) rows.push_back(header);
  rows.push_back(row);
  printRows(mode, rows);
}

void printValue(const OutputMode& mode, const std::string& name, const json& value) {
  if (mode.json) return printJson(json{{name, value}});
  std::cout << cell(value) << '\n';
}

}  // namespace brenmoor::cli
