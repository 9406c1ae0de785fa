// An SVG picture in the making.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace atdp::host {

struct SvgPoint {
    double x;
    double y;
};

// Every element has a class of the style sheet that the picture starts with.
class SvgText {
 public:
    SvgText(double width, double height, std::string_view styleSheet);

    void definitions(std::string_view elements);
    void rectangle(std::string_view styleClass, SvgPoint topLeft, SvgPoint bottomRight);
    void line(std::string_view styleClass, SvgPoint from, SvgPoint to);
    void polygon(std::string_view styleClass, const std::vector<SvgPoint>& corners);
    void text(std::string_view styleClass, SvgPoint baseline, std::string_view words);
    void uprightText(std::string_view styleClass, SvgPoint baseline, std::string_view words);

    // The whole picture; nothing can be added after it.
    std::string finish();

 private:
    void add(std::initializer_list<std::string_view> pieces);
    void addNumber(double value);
    void addAttribute(std::string_view name, double value);

    std::string text_;
};

}  // namespace atdp::host
