// Reads text files into line arrays.
#include "convert/line_reader.h"

namespace {

constexpr std::size_t missing_file_lines = 11;
constexpr std::size_t unreadable_file_lines = 1;

static_assert(Files::max_file_size <= LineArray::max_text_size);

LineArray lines_or_empty(Result<LineArray> lines) {
  if (lines)
    return *std::move(lines);
  return LineArray::empty(lines.failure().missing() ? missing_file_lines : unreadable_file_lines);
}

}  // namespace

Result<LineArray> read_text(Files& files, const std::string& path) {
  auto text = files.read(path);
  if (!text)
    return text.failure();
  return LineArray::split(std::move(*text));
}

LineArray readlines(Files& files, const std::string& path) {
  return lines_or_empty(read_text(files, path));
}

LineArray readlines_or_report(Form1& form, const std::string& path) {
  auto lines = read_text(form.files, path);
  if (!lines && !lines.failure().missing())
    report_trouble(form, lines.failure());
  if (lines && ends_lines_in_lf(lines->text()))
    report_trouble(form, Failure{path, "use it", needs_cr_lf});
  return lines_or_empty(std::move(lines));
}

bool ends_lines_in_lf(std::string_view text) {
  return text.find('\n') != std::string_view::npos &&
         text.find(LineArray::line_end) == std::string_view::npos;
}
