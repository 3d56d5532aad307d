// Svg: a picture inside a page. Lengths are in units of the picture, which scales to the width of
// the page; colours and fonts come from the classes of the page's style.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orx::orxkdb {

class Svg {
 public:
  struct Box {
    double x;
    double y;
    double width;
    double height;
  };

  // `title` is what is read out in place of the picture; escaped.
  Svg(double width, double height, std::string_view title);

  // Texts and tips are escaped; `style`, which names classes, is trusted. y grows downwards; a text
  // stands on its y. A tip is shown when the pointer rests on the shape.
  void rect(const Box& box, std::string_view style, std::string_view tip = "");
  void text(double x, double y, std::string_view style, std::string_view text);
  // A line from one point to another that leaves both level.
  void curve(double x1, double y1, double x2, double y2, std::string_view style,
             std::string_view tip);
  // A band from the right edge of one box to the left edge of another.
  void ribbon(const Box& from, const Box& to, std::string_view style, std::string_view tip);

  // The whole element; the object is of no use afterwards.
  [[nodiscard]] std::string take();

 private:
  void shape(std::string_view element, std::string_view style, std::string_view tip);

  std::string html_;
};

// A picture, which is trusted, with its caption, which is escaped.
[[nodiscard]] std::string figure(std::string_view caption, std::string_view picture);

// A length as the picture writes it, with one decimal at most, in any locale: "12.5".
[[nodiscard]] std::string svgNumber(double number);

// The class of the colour for the item of that number; they come again after eight.
[[nodiscard]] std::string svgColor(std::size_t number);

}  // namespace orx::orxkdb
