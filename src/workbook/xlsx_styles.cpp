#include "workbook/xlsx_styles.hpp"

#include <map>

#include "workbook/part_parser.hpp"

namespace pellago {

namespace {

// The number format ids of the cell formats (cellXfs) and the custom format codes.
class StylesHandler final : public PartHandler {
 public:
  void start(std::string_view name, const Attributes& attributes) override {
    if (name == "numFmt") {
      if (auto id = parse_number<int>(attributes.get("numFmtId").value_or(""))) {
        custom_codes[*id] = std::string(attributes.get("formatCode").value_or(""));
      }
    } else if (name == "cellXfs") {
      in_cell_formats_ = true;
    } else if (name == "xf" && in_cell_formats_) {
      format_ids.push_back(parse_number<int>(attributes.get("numFmtId").value_or("")).value_or(0));
    }
  }
  void end(std::string_view name) override {
    if (name == "cellXfs") in_cell_formats_ = false;
  }
  void text(std::string_view) override {}

  std::map<int, std::string> custom_codes;
  std::vector<int> format_ids;

 private:
  bool in_cell_formats_ = false;
};

}  // namespace

CellFormats read_cell_formats(const ZipPackage& package, const std::string& part_name,
                              std::uint64_t cap) {
  StylesHandler handler;
  parse_part(package, part_name, cap, handler);
  return cell_formats(handler.format_ids, handler.custom_codes);
}

}  // namespace pellago
