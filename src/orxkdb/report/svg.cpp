#include "orxkdb/report/svg.h"

#include <array>
#include <charconv>
#include <utility>

#include "orxkdb/report/html_text.h"

namespace orx::orxkdb {

namespace {

std::string attribute(std::string_view name, double number) {
  return " " + std::string(name) + "=\"" + svgNumber(number) + "\"";
}

std::string point(double x, double y) {
  return svgNumber(x) + " " + svgNumber(y);
}

// From the current point; the two control points keep both ends level.
std::string curveTo(double x1, double y1, double x2, double y2) {
  const double middle = (x1 + x2) / 2;
  return "C" + point(middle, y1) + " " + point(middle, y2) + " " + point(x2, y2);
}

}  // namespace

std::string svgNumber(double number) {
  std::array<char, 32> chars{};
  const auto end =
      std::to_chars(chars.data(), chars.data() + chars.size(), number, std::chars_format::fixed, 1);
  std::string text(chars.data(), end.ptr);
  if (text.ends_with(".0")) text.resize(text.size() - 2);
  return text;
}

std::string svgColor(std::size_t number) {
  constexpr std::size_t colors = 8;
  return "c" + std::to_string(number % colors);
}

Svg::Svg(double width, double height, std::string_view title) {
  html_ = "<svg role=\"img\" viewBox=\"0 0 " + svgNumber(width) + " " + svgNumber(height) +
          "\" aria-label=\"" + escaped(title) + "\">\n";
}

void Svg::rect(const Box& box, std::string_view style, std::string_view tip) {
  shape("rect" + attribute("x", box.x) + attribute("y", box.y) + attribute("width", box.width) +
            attribute("height", box.height),
        style, tip);
}

void Svg::text(double x, double y, std::string_view style, std::string_view text) {
  html_ += "<text" + attribute("x", x) + attribute("y", y);
  html_.append(" class=\"").append(style).append("\">").append(escaped(text)).append("</text>\n");
}

void Svg::curve(double x1, double y1, double x2, double y2, std::string_view style,
                std::string_view tip) {
  shape("path d=\"M" + point(x1, y1) + curveTo(x1, y1, x2, y2) + "\"", style, tip);
}

void Svg::ribbon(const Box& from, const Box& to, std::string_view style, std::string_view tip) {
  const double left = from.x + from.width;
  const double fromEnd = from.y + from.height;
  const double toEnd = to.y + to.height;
  shape("path d=\"M" + point(left, from.y) + curveTo(left, from.y, to.x, to.y) + "L" +
            point(to.x, toEnd) + curveTo(to.x, toEnd, left, fromEnd) + "Z\"",
        style, tip);
}

void Svg::shape(std::string_view element, std::string_view style, std::string_view tip) {
  const std::string_view name = element.substr(0, element.find(' '));
  html_.append("<").append(element).append(" class=\"").append(style).append("\">");
  if (!tip.empty()) html_.append("<title>").append(escaped(tip)).append("</title>");
  html_.append("</").append(name).append(">\n");
}

std::string figure(std::string_view caption, std::string_view picture) {
  std::string html = "<figure><figcaption>" + escaped(caption) + "</figcaption>\n";
  return html.append(picture).append("</figure>\n");
}

std::string Svg::take() {
  return std::exchange(html_, {}) + "</svg>\n";
}

}  // namespace orx::orxkdb
