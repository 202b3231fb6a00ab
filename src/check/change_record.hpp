#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "check/findings.hpp"
#include "document/document.hpp"
#include "merge/merge_observer.hpp"

namespace pellago {

// Records every change a merge makes to the document, in the order it makes them, each with the
// sheet row and the clip it is made for. It only listens: to the document's edits, and to the
// merge for the row being applied.
struct ChangeRecord final : MergeObserver, EditObserver {
  explicit ChangeRecord(std::vector<Change>& changes) : changes_(changes) {}

  void sheet_read(const Workbook& workbook, const std::vector<Cell>& headers,
                  const std::vector<LogRow>& rows) override;
  void document_read(Document& document, const std::string& xml_path) override;
  void row_started(const ClipMatch& match, std::size_t j) override;

  void setting_text(Element element, std::string_view text) override;
  void setting_attribute(Element element, const char* name, std::string_view value) override;
  void inserted(Element node) override;
  void removing(Element node) override;

 private:
  std::optional<ClipRef> clip_of(Element element) const;
  bool in_copy_being_made(Element element) const;
  void record(Change change);
  void record_copies(const ClipMatch& match);

  std::vector<Change>& changes_;
  const std::vector<LogRow>* rows_ = nullptr;
  // The row being applied and the name its clip was matched by.
  std::optional<int> row_;
  std::optional<std::string> clip_name_;
  std::vector<xmlNodePtr> copies_;  // copies appended but not yet reported
};

}  // namespace pellago
