// Pieces of SVG as text.
#ifndef CALIB_CHARTS_SVG_H_
#define CALIB_CHARTS_SVG_H_

#include <string>

namespace calib {

// Printable text for an element or an attribute: what XML reserves is escaped.
std::string XmlText(const std::string& text);

// A coordinate as text, to a tenth.
std::string Coordinate(double value);

// An element: <name attributes/>, or <name attributes>content</name>; the content is XML already.
std::string XmlElement(const std::string& name, const std::string& attributes,
                       const std::string& content = "");

// An attribute that is a number: ' x="12.5"'; and the one that names classes.
std::string Attribute(const std::string& name, double value);
std::string Class(const std::string& classes);

}  // namespace calib

#endif  // CALIB_CHARTS_SVG_H_
