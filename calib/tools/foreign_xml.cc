// OpenCV's XML: an element is a map of the elements in it, or a list of those called "_", or text.
// Text is a list where blanks separate several pieces, and so is a matrix's <data> in any case.
// The type_id of an element repeats what its children tell.
#include <tinyxml2.h>

#include <algorithm>
#include <cctype>

#include "calib/console/failure.h"
#include "calib/tools/foreign_tree.h"

namespace calib {
namespace {

using Kind = ForeignTree::Kind;

bool IsBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

[[noreturn]] void Refuse(const std::string& file, int line, const std::string& what,
                         const std::string& remedy) {
  throw Failure(file + (line > 0 ? ":" + std::to_string(line) : "") + ": " + what, remedy);
}

// Adds the pieces of text that begins at `line`, counted from 1; returns how many.
uint32_t AddPieces(const std::string& text, int line, ForeignTree* tree) {
  uint32_t pieces = 0;
  for (size_t at = 0; at < text.size();) {
    if (IsBlank(text[at])) {
      line += text[at++] == '\n' ? 1 : 0;
      continue;
    }
    const auto piece = tree->Add(line - 1, -1);
    const bool quoted = text[at] == '"';
    const size_t begin = at + (quoted ? 1 : 0);
    at = begin;
    while (at < text.size() && (quoted ? text[at] != '"' : !IsBlank(text[at]))) {
      line += text[at] == '\n' ? 1 : 0;
      at += quoted && text[at] == '\\' && at + 1 < text.size() ? 2 : 1;
    }
    tree->SetText(piece, std::string_view(text).substr(begin, at - begin));
    at += quoted ? 1 : 0;
    ++pieces;
  }
  return pieces;
}

ForeignTree::Index Load(const std::string& file, const tinyxml2::XMLElement& element,
                        ForeignTree* tree);

void LoadChildren(const std::string& file, const tinyxml2::XMLElement& element,
                  ForeignTree::Index index, ForeignTree* tree) {
  uint32_t texts = 0, listed = 0, named = 0;
  for (const auto* node = element.FirstChild(); node != nullptr; node = node->NextSibling()) {
    if (const auto* child = node->ToElement()) {
      const ForeignTree::Index item = Load(file, *child, tree);
      const std::string_view name = child->Name();
      if (name == "_") {
        ++listed;
      } else {
        tree->SetKey(item, name);
        ++named;
      }
    } else if (node->ToText() != nullptr) {
      texts += AddPieces(node->Value(), node->GetLineNum(), tree);
    }
  }
  const bool data = std::string_view(element.Name()) == "data";
  if (texts + listed + named == 0 && !data) return;
  if (named != 0 && texts + listed != 0) {
    Refuse(file, element.GetLineNum(),
           std::string("<") + element.Name() + "> has named elements, and other things beside them",
           "Correct it there.");
  }
  tree->Close(index, named != 0 ? Kind::kMap : Kind::kList, texts + listed + named);
  if (texts == 1 && listed == 0 && !data) tree->Unwrap(index);
}

ForeignTree::Index Load(const std::string& file, const tinyxml2::XMLElement& element,
                        ForeignTree* tree) {
  const auto* attribute = element.FirstAttribute();
  while (attribute != nullptr && attribute->Name() == std::string("type_id")) {
    attribute = attribute->Next();
  }
  if (attribute != nullptr) {
    Refuse(file, element.GetLineNum(),
           std::string("<") + element.Name() + "> has an attribute '" + attribute->Name() +
               "', which OpenCV does not write",
           "Take it out, or check that --from names the tool that wrote the file.");
  }
  const ForeignTree::Index index = tree->Add(element.GetLineNum() - 1, -1);
  LoadChildren(file, element, index, tree);
  return index;
}

// What is wrong in the line that the reader names.
std::string Trouble(const tinyxml2::XMLDocument& document) {
  switch (document.ErrorID()) {
    case tinyxml2::XML_ERROR_MISMATCHED_ELEMENT:
      return "the element that begins here is not closed by a tag of its name";
    case tinyxml2::XML_ERROR_PARSING:
      return "the element that begins here is not closed: the file is cut off";
    case tinyxml2::XML_ELEMENT_DEPTH_EXCEEDED:
      return "is nested too deep";
    default:
      return std::string("is no XML (") + document.ErrorName() + ")";
  }
}

}  // namespace

ForeignTree LoadXml(const std::string& file, const std::string& text) {
  const size_t zero = text.find('\0');
  if (zero != std::string::npos) {
    const auto line =
        std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(zero), '\n');
    Refuse(file, static_cast<int>(line) + 1, "holds a zero byte, which XML does not",
           "It is damaged; get it anew.");
  }
  tinyxml2::XMLDocument document;
  if (document.Parse(text.data(), text.size()) != tinyxml2::XML_SUCCESS) {
    Refuse(file, document.ErrorLineNum(), Trouble(document),
           "Correct it there, or get the file anew.");
  }
  const auto* root = document.RootElement();
  if (root == nullptr) throw Failure(file + ": is empty", "Check that it is the file you meant.");
  if (root->Name() != std::string("opencv_storage")) {
    Refuse(
        file, root->GetLineNum(),
        std::string("<") + root->Name() + "> is the outermost element, expected <opencv_storage>",
        "Check that it is a file of OpenCV's.");
  }
  if (const auto* next = root->NextSiblingElement()) {
    Refuse(file, next->GetLineNum(), "a document of its own begins here",
           "Bring in one document at a time: split the file there.");
  }
  ForeignTree tree;
  Load(file, *root, &tree);
  return tree;
}

}  // namespace calib
