#include "host/svg_text.h"

#include <cstdio>
#include <utility>

#include "host/text_escape.h"

namespace atdp::host {

SvgText::SvgText(double width, double height, std::string_view styleSheet) {
    add({"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\""});
    addAttribute("width", width);
    addAttribute("height", height);
    add({" viewBox=\"0 0 "});
    addNumber(width);
    add({" "});
    addNumber(height);
    add({"\">\n<style>", styleSheet, "</style>\n"});
}

void SvgText::definitions(std::string_view elements) {
    add({"<defs>", elements, "</defs>\n"});
}

void SvgText::rectangle(std::string_view styleClass, SvgPoint topLeft, SvgPoint bottomRight) {
    add({"<rect class=\"", styleClass, "\""});
    addAttribute("x", topLeft.x);
    addAttribute("y", topLeft.y);
    addAttribute("width", bottomRight.x - topLeft.x);
    addAttribute("height", bottomRight.y - topLeft.y);
    add({"/>\n"});
}

void SvgText::line(std::string_view styleClass, SvgPoint from, SvgPoint to) {
    add({"<line class=\"", styleClass, "\""});
    addAttribute("x1", from.x);
    addAttribute("y1", from.y);
    addAttribute("x2", to.x);
    addAttribute("y2", to.y);
    add({"/>\n"});
}

void SvgText::polygon(std::string_view styleClass, const std::vector<SvgPoint>& corners) {
    add({"<polygon class=\"", styleClass, "\" points=\""});
    for (const SvgPoint& corner : corners) {
        addNumber(corner.x);
        add({","});
        addNumber(corner.y);
        add({" "});
    }
    add({"\"/>\n"});
}

void SvgText::text(std::string_view styleClass, SvgPoint baseline, std::string_view words) {
    add({"<text class=\"", styleClass, "\""});
    addAttribute("x", baseline.x);
    addAttribute("y", baseline.y);
    add({">", xmlText(words), "</text>\n"});
}

void SvgText::uprightText(std::string_view styleClass, SvgPoint baseline, std::string_view words) {
    add({"<text class=\"", styleClass, "\" transform=\"translate("});
    addNumber(baseline.x);
    add({" "});
    addNumber(baseline.y);
    add({") rotate(-90)\">", xmlText(words), "</text>\n"});
}

std::string SvgText::finish() {
    add({"</svg>\n"});
    return std::move(text_);
}

void SvgText::add(std::initializer_list<std::string_view> pieces) {
    for (const std::string_view piece : pieces) text_ += piece;
}

void SvgText::addNumber(double value) {
    char digits[64];
    std::snprintf(digits, sizeof digits, "%.1f", value);
    text_ += digits;
}

void SvgText::addAttribute(std::string_view name, double value) {
    add({" ", name, "=\""});
    addNumber(value);
    add({"\""});
}

}  // namespace atdp::host
