#!/usr/bin/env python3
"""Writes the node archives of the FFT filter editor, src/resources/FFTFILTER.xml (classic look)
and FFTFILTER.V7.xml (newer look), in the container format the node builder reads: one element a
line, CR LF line ends, the keys of every record in order with capitals first.

Run it from anywhere after changing a position or a label here; commit the script and the two
archives together. `qafui check src/resources/FFTFILTER*.xml` validates the result.
"""

import os
import sys

AREA = "$$$/qoraudiofiltersui/FFTFilterUI/"


def loc(key, text):
    """A localisable text: the key resolves through the localiser, `text` is its default."""
    return "(" + AREA + key + "=" + text + ")"


# Value elements. Each returns a list of lines.
def int_(value, unsigned=False):
    kind = "unsigned" if unsigned else "signed"
    return ["<int type='%s' size='32'>%d</int>" % (kind, value)]


def float_(value):
    return ["<float>%s</float>" % fmt(value)]


def double_(value):
    return ["<double>%s</double>" % fmt(value)]


def fmt(value):
    text = ("%.6f" % value).rstrip("0").rstrip(".")
    return text if text not in ("", "-0") else "0"


def string_(text):
    return ["<string>%s</string>" % escape(text)]


def ustring_(text):
    return ["<ustring>%s</ustring>" % escape(text)]


def bool_(value):
    return ["<true/>" if value else "<false/>"]


def escape(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")


def ustring_array(items):
    lines = ["<array>", "<array.type>", "<ustring/>", "</array.type>"]
    for item in items:
        lines += ustring_(item)
    return lines + ["</array>"]


def record(pairs):
    """A prop.list of (key, value lines); keys sorted with capitals first, as in every archive."""
    lines = ["<prop.list>"]
    for key, value in sorted(pairs, key=lambda pair: pair[0]):
        lines += ["<prop.pair>", "<key>%s</key>" % key] + value + ["</prop.pair>"]
    return lines + ["</prop.list>"]


def rect(left, top, width, height):
    return record([(".aptype", int_(1)), ("height", float_(height)), ("left", float_(left)),
                   ("top", float_(top)), ("width", float_(width))])


def enum(selected, items=None):
    pairs = [(".aptype", int_(2)), ("selected", int_(selected))]
    if items is not None:
        pairs.append(("items", ustring_array(items)))
    return record(pairs)


def constraints(bits):
    return record([(".aptype", int_(4)), ("constraints", int_(bits, unsigned=True))])


def indexed(prefix, members):
    pairs = [("count", int_(len(members), unsigned=True))]
    pairs += [(prefix + str(i), member) for i, member in enumerate(members)]
    return record(pairs)


# Sections of the class chains.
def section(name, pairs=()):
    return record([("sectionName", ustring_(name))] + list(pairs))


def node_section(node_id, bounds, visible=True, tooltip=None):
    pairs = [("bounds", rect(*bounds)), ("id", string_(node_id)), ("visible", bool_(visible))]
    if tooltip is not None:
        pairs.append(("tooltip", ustring_(tooltip)))
    return section("qorui::ui::UI_Node", pairs)


def sub_view_section(children=(), edges=0):
    return section("qorui::ui::UI_SubView", [
        ("AutoLayout", bool_(False)), ("AutoLayout_Horizontal", bool_(False)),
        ("AutoLayout_MaintainMargins", bool_(False)), ("AutoLayout_ScaleChildren", bool_(False)),
        ("Constraints", constraints(edges)), ("LayoutChildren", bool_(False)),
        ("children", indexed("child-", list(children)))])


def control_section(enabled=True, wants_focus=False):
    return section("qorui::ui::UI_ControlView", [
        ("downState", bool_(False)), ("enabled", bool_(enabled)),
        ("suppressFocusDrawing", bool_(False)), ("wantsFocus", bool_(wants_focus))])


def button_section(selected=False):
    return section("qorui::ui::UI_Button", [
        ("changeFocusOnClick", bool_(False)), ("chromeType", enum(-1)),
        ("commitAppearance", bool_(False)), ("componentSize", enum(1)),
        ("contentOffsetX", float_(0)), ("contentOffsetY", float_(0)),
        ("cornerRadius", float_(4)), ("defaultAppearance", bool_(False)),
        ("downOffsetX", float_(0)), ("downOffsetY", float_(0)), ("emphasized", bool_(False)),
        ("notificationOnMouseDown", bool_(False)), ("quiet", bool_(False)),
        ("selected", bool_(selected)), ("showHoldIcon", bool_(False)),
        ("springLoaded", bool_(False)), ("staticColor", enum(0)), ("strokeSize1", float_(1)),
        ("strokeSize2", float_(1)), ("style", enum(0)), ("variant", enum(1))])


def node(adapter, sections):
    return record([("adapter", ustring_(adapter)), ("sections", indexed("section-", sections))])


def full(name):
    return "qorui::ui::" + name


# Nodes.
def sub_view(node_id, bounds, children=(), visible=True, edges=0):
    return node(full("UI_SubView"),
                [sub_view_section(children, edges), node_section(node_id, bounds, visible)])


def static_text(node_id, bounds, text, font_size):
    return node(full("UI_StaticText"), [
        section(full("UI_StaticText"), [("fontSize", float_(font_size)), ("text", ustring_(text)),
                                        ("textAlignment", enum(0)),
                                        ("textTruncation", bool_(True))]),
        control_section(), sub_view_section(), node_section(node_id, bounds)])


def popup(node_id, bounds, items, font_size):
    return node(full("UI_Popup"), [
        section(full("UI_Popup"), [
            ("alwaysNotify", bool_(False)), ("componentSize", enum(1)),
            ("drawDivider", bool_(True)), ("fontSize", float_(font_size)),
            ("fontSizeID", enum(1)), ("popupItems", ustring_array(items)),
            ("popupType", enum(0)), ("popupVariantType", enum(0))]),
        button_section(), section(full("UI_InteractiveControlView")),
        control_section(wants_focus=True), sub_view_section(), node_section(node_id, bounds)])


def checkbox(node_id, bounds, label):
    return node(full("UI_Checkbox"), [
        section(full("UI_Checkbox"), [("checkSize", enum(1)), ("checked", bool_(False)),
                                      ("label", ustring_(label))]),
        button_section(), section(full("UI_InteractiveControlView")),
        control_section(wants_focus=True), sub_view_section(), node_section(node_id, bounds)])


def disclosure(node_id, bounds, label):
    return node(full("UI_DisclosureTriangleButton"), [
        section(full("UI_DisclosureTriangleButton"), [("label", ustring_(label))]),
        section(full("UI_PictureTextButton"), [("centeredByPictureTextGap", bool_(False)),
                                               ("spacing", float_(4))]),
        button_section(), section(full("UI_InteractiveControlView")),
        control_section(wants_focus=True), sub_view_section(), node_section(node_id, bounds)])


def picture_button(node_id, bounds, image, tooltip):
    return node(full("UI_PictureButton"), [
        section(full("UI_PictureButton"), [("imageName", string_(image)),
                                           ("isImageLoaded", bool_(False))]),
        button_section(), section(full("UI_InteractiveControlView")),
        control_section(wants_focus=True), sub_view_section(),
        node_section(node_id, bounds, tooltip=tooltip)])


WINDOWS = [("Triangular", "Triangular"), ("Hann", "Hann"), ("Hamming", "Hamming"),
           ("Blackman", "Blackman"), ("Gaussian", "Gaussian"),
           ("BlackmanHarris", "Blackman-Harris"), ("Kaiser140", "Kaiser (140 dB)"),
           ("Kaiser180", "Kaiser (180 dB)")]


def editor(look):
    """The editor of one look: the graph over a row of controls, and the advanced section below
    the row, hidden; the editor grows by the section's height when it opens."""
    v7 = look == "v7"
    width = 540.0 if v7 else 520.0
    graph_height = 308.0 if v7 else 300.0
    control = 22.0 if v7 else 20.0
    font = 11.0
    row = graph_height + (10.0 if v7 else 8.0)
    height = row + control + (10.0 if v7 else 8.0)
    section_height = control + (14.0 if v7 else 12.0)

    text_top = (control - 16.0) / 2
    scale_label = static_text("", (8, row + text_top, 42, 16), loc("Scale", "Scale:"), font)
    scale = popup("LinearLogMode", (52, row, 124, control),
                  [loc("Linear", "Linear"), loc("Logarithmic", "Logarithmic")], font)
    splines = checkbox("SplineCurves", (194, row + 1, 118, control - 2),
                       loc("SplineCurves", "Spline Curves"))
    advanced = disclosure("Advanced", (328, row + 1, 100, control - 2),
                          loc("Advanced", "Advanced"))
    reset_size = 24.0 if v7 else 20.0
    reset = picture_button("ResetButton", (width - reset_size - 8, row + (control - reset_size) / 2,
                                           reset_size, reset_size),
                           "Reset_Sm", loc("Reset", "Reset"))
    inner = (section_height - control) / 2
    fft_label = static_text("", (8, inner + text_top, 62, 16), loc("FFTSize", "FFT Size:"), font)
    fft = popup("FFTSize", (72, inner, 104, control), [], font)
    window_label = static_text("", (194, inner + text_top, 58, 16), loc("Window", "Window:"),
                               font)
    windows = popup("WindowType", (254, inner, 174, control),
                    [loc(key, text) for key, text in WINDOWS], font)
    advanced_section = sub_view("AdvancedSection", (0, height, width, section_height),
                                [fft_label, fft, window_label, windows], visible=False, edges=12)
    graph = sub_view("FFTFilterGraph", (0, 0, width, graph_height), edges=20)
    children = [graph, scale_label, scale, splines, advanced, reset, advanced_section]
    root = sub_view("FFTFilterUI", (0, 0, width, height), children, edges=0)
    document = ["<?xml version='1.0'?>", "<prop.map version='4'>"]
    document += record([("UINodeArchive", int_(1, unsigned=True)), ("root", root)])
    document += ["</prop.map>"]
    return "".join(line + "\r\n" for line in document)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = os.path.join(here, os.pardir, "src", "resources")
    if len(sys.argv) > 1:
        out = sys.argv[1]
    for name, look in (("FFTFILTER.xml", "classic"), ("FFTFILTER.V7.xml", "v7")):
        with open(os.path.join(out, name), "w", newline="") as file:
            file.write(editor(look))


if __name__ == "__main__":
    main()
