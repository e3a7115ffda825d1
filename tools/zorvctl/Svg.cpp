// The picture of the framing, drawn to scale in the 5440 x 3060 frame (PTZ crops times 4.25).
#include "Svg.h"

#include <stdio.h>

#include <map>
#include <tuple>

#include "State.h"

namespace zorvctl {

namespace {

constexpr double kScale = 4.25;  // PTZ space 1280 x 720 to the full frame
constexpr int kFrameWidth = 5440;
constexpr int kFrameHeight = 3060;
constexpr const char* kInForce = "#2e7d32";
constexpr const char* kAnnounced = "#1565c0";
constexpr const char* kPreset = "#ef6c00";

std::string num(double value) {
    char text[32];
    snprintf(text, sizeof(text), "%.2f", value);
    std::string s = text;
    while (s.back() == '0') s.pop_back();
    if (s.back() == '.') s.pop_back();
    return s;
}

// A crop in the frame, with its label inside it at one of its corners.
std::string rect(const Crop& c, const char* color, const std::string& style,
                 const std::string& label, const char* corner) {
    if (c.right <= c.left || c.bottom <= c.top) return "";
    double x = c.left * kScale, y = c.top * kScale;
    double w = (c.right - c.left) * kScale, h = (c.bottom - c.top) * kScale;
    std::string svg = "  <rect x=\"" + num(x) + "\" y=\"" + num(y) + "\" width=\"" + num(w) +
                      "\" height=\"" + num(h) + "\" stroke=\"" + color + "\" " + style + "/>\n";
    if (label.empty()) return svg;
    bool right = corner[1] == 'r', bottom = corner[0] == 'b';
    svg += "  <text x=\"" + num(right ? x + w - 40 : x + 40) + "\" y=\"" +
           num(bottom ? y + h - 50 : y + 140) + "\" fill=\"" + color + "\"" +
           (right ? " text-anchor=\"end\"" : "") + ">" + label + "</text>\n";
    return svg;
}

std::string legend(int line, const char* color, const std::string& text) {
    return "  <text x=\"0\" y=\"" + std::to_string(kFrameHeight + 170 + line * 150) + "\" fill=\"" +
           color + "\">" + text + "</text>\n";
}

}  // namespace

void writeSvg(Context& c, const std::string& path) {
    SceneControl inForce;
    check(c.provider->getCurrentCameraCropArea([&inForce](const SceneControl& s) { inForce = s; }));

    // Presets with the same rectangle share one outline and one label.
    std::map<std::tuple<int32_t, int32_t, int32_t, int32_t>, std::string> presets;
    for (const auto& [n, p] : storedPresets()) {
        std::string& label = presets[std::make_tuple(p.left, p.top, p.right, p.bottom)];
        label += (label.empty() ? "preset " : ", ") + std::to_string(n);
    }

    std::string svg =
            "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"710\" height=\"495\" "
            "viewBox=\"-120 -160 5680 3960\" font-family=\"sans-serif\" font-size=\"110\">\n"
            "  <defs><marker id=\"arrow\" viewBox=\"0 0 10 10\" refX=\"8\" refY=\"5\" "
            "markerWidth=\"6\" markerHeight=\"6\" orient=\"auto\"><path d=\"M0,0 L10,5 L0,10 z\" "
            "fill=\"#1565c0\"/></marker></defs>\n"
            "  <rect x=\"-120\" y=\"-160\" width=\"5680\" height=\"3960\" fill=\"#ffffff\"/>\n"
            "  <text x=\"0\" y=\"-50\" fill=\"#37474f\">frame 5440 x 3060, crops of the 1280 x 720 "
            "space drawn x4.25</text>\n"
            "  <rect x=\"0\" y=\"0\" width=\"5440\" height=\"3060\" fill=\"#eceff1\" "
            "stroke=\"#37474f\" stroke-width=\"12\"/>\n";
    // The crop in force first, so that outlines equal to it stay visible on top of it.
    if (inForce.crops.size() > 0) {
        svg += rect(
                inForce.crops[0], kInForce,
                "stroke-width=\"36\" fill=\"" + std::string(kInForce) + "\" fill-opacity=\"0.15\"",
                "in force", "tl");
    }
    // Every announced crop, thin, with the path of their centres in the order announced.
    std::string centres;
    for (const Crop& a : c.announcedCrops) {
        svg += rect(a, kAnnounced, "stroke-width=\"6\" stroke-opacity=\"0.5\" fill=\"none\"", "",
                    "tl");
        std::string x = num((a.left + a.right) * kScale / 2),
                    y = num((a.top + a.bottom) * kScale / 2);
        centres += (centres.empty() ? "M" : " L") + x + " " + y;
        svg += "  <circle cx=\"" + x + "\" cy=\"" + y + "\" r=\"30\" fill=\"" + kAnnounced +
               "\"/>\n";
    }
    if (c.announcedCrops.size() > 1) {
        svg += "  <path d=\"" + centres + "\" stroke=\"" + kAnnounced +
               "\" stroke-width=\"10\" fill=\"none\" marker-end=\"url(#arrow)\"/>\n";
    }
    if (c.announced && c.lastAnnounced.crops.size() > 0) {
        svg += rect(c.lastAnnounced.crops[0], kAnnounced,
                    "stroke-width=\"20\" stroke-dasharray=\"100 60\" fill=\"none\"",
                    "last announced", "bl");
    }
    std::string presetList;
    for (const auto& [r, label] : presets) {
        Crop p{std::get<0>(r), std::get<1>(r), std::get<2>(r), std::get<3>(r)};
        svg += rect(p, kPreset, "stroke-width=\"12\" stroke-dasharray=\"40 40\" fill=\"none\"",
                    label, "tr");
        presetList += (presetList.empty() ? "" : "; ") + label + " " + formatCrop(p);
    }
    svg += legend(0, kInForce,
                  "in force (getCurrentCameraCropArea): " +
                          (inForce.crops.size() > 0 ? formatCrop(inForce.crops[0]) : "no crop"));
    svg += legend(1, kAnnounced,
                  "last announced to listeners: " + (c.announced && c.lastAnnounced.crops.size() > 0
                                                             ? formatCrop(c.lastAnnounced.crops[0])
                                                             : "none"));
    svg += legend(2, kAnnounced,
                  "every announced crop (thin) and the path of their centres: " +
                          std::to_string(c.announcedCrops.size()) + " announcements");
    svg += legend(3, kPreset, "presets: " + (presetList.empty() ? "none" : presetList));
    svg += "</svg>\n";

    FILE* file = fopen(path.c_str(), "w");
    if (file == nullptr) throw CommandError("cannot write " + path);
    bool written = fwrite(svg.data(), 1, svg.size(), file) == svg.size();
    if (fclose(file) != 0 || !written) throw CommandError("cannot write " + path);
}

}  // namespace zorvctl
