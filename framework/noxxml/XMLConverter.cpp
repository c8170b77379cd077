#include "framework/noxxml/XMLConverter.h"

#include "framework/noxxml/AgFactory.h"
#include "framework/noxxml/Characters.h"
#include "framework/noxxml/Importer.h"

namespace noxxml {

// Writes one tree, without recursion, so that no tree is too deep for it.
class Writer {
 public:
  // False when a name is not legal.
  bool write(const AgElement* top) {
    const AgElement* at = top;
    for (;;) {
      if (!open(at)) {
        return false;
      }
      if (at->firstChild_ != nullptr) {
        at = at->firstChild_;
        continue;
      }
      close(at);
      while (at != top && at->nextSibling_ == nullptr) {
        at = at->parent_;
        close(at);
      }
      if (at == top) {
        return true;
      }
      at = at->nextSibling_;
    }
  }

  std::string take() { return std::move(out_); }

 private:
  static bool isEmpty(const AgElement* element) {
    return element->firstChild_ == nullptr && element->text_.empty();
  }

  bool open(const AgElement* element) {
    if (!isLegalName(element->name_)) {
      return false;
    }
    out_ += '<';
    out_ += element->name_;
    for (const auto* each = element->firstAttribute_; each != nullptr; each = each->next) {
      if (!isLegalName(each->name)) {
        return false;
      }
      out_ += ' ';
      out_ += each->name;
      out_ += "=\"";
      appendEscapedAttribute(out_, each->value);
      out_ += '"';
    }
    out_ += isEmpty(element) ? "/>" : ">";
    writeText(element);
    return true;
  }

  // Blanks before a child would be read back as layout, unless the first stands as a reference.
  void writeText(const AgElement* element) {
    std::string_view text = element->text_;
    const bool isBlank = text.find_first_not_of(" \t\n\r") == std::string_view::npos;
    if (element->firstChild_ != nullptr && isBlank && !text.empty()) {
      out_ += "&#";
      out_ += std::to_string(static_cast<int>(text.front()));
      out_ += ';';
      text.remove_prefix(1);
    }
    appendEscapedText(out_, text);
  }

  void close(const AgElement* element) {
    if (isEmpty(element)) {
      return;
    }
    out_ += "</";
    out_ += element->name_;
    out_ += '>';
  }

  std::string out_;
};

XMLConverter::XMLConverter(AgFactory* factory)
    : own_(factory == nullptr ? std::make_unique<AgFactory>() : nullptr),
      factory_(factory == nullptr ? own_.get() : factory) {}

XMLConverter::~XMLConverter() = default;

std::string_view XMLConverter::keep(std::string_view text) {
  return legalPrefix(text) == text.size() ? factory_->copyText(text)
                                          : factory_->copyText(repaired(text));
}

AgElement* XMLConverter::xmlAddRootNode(const base::String& name, const base::String& ns) {
  AgElement* const root = factory_->createElement(factory_->copyText(name.view()), {}, nullptr);
  if (!ns.empty()) {
    xmlAddAttr("xmlns", ns, root);
  }
  return root;
}

AgElement* XMLConverter::xmlAddChildNode(const base::String& name, const base::String& value,
                                         AgElement* parent) {
  if (parent == nullptr) {
    return nullptr;
  }
  return factory_->createElement(factory_->copyText(name.view()), keep(value.view()), parent);
}

void XMLConverter::xmlAddAttr(const base::String& name, const base::String& value,
                              AgElement* element) {
  if (element == nullptr) {
    return;
  }
  const std::string_view kept = keep(value.view());
  if (AgElement::Attribute* const there = element->findAttribute(name.view())) {
    there->value = kept;
    return;
  }
  factory_->createAttribute(element, factory_->copyText(name.view()), kept);
}

std::string XMLConverter::xmlSerialize(const AgElement* element) {
  Writer writer;
  if (element == nullptr || !writer.write(element)) {
    return std::string();
  }
  return writer.take();
}

AgElement* XMLConverter::xmlDeserialize(std::string_view text) {
  return Importer(*factory_).import(text);
}

std::map<base::String, base::String> XMLConverter::xml2map(std::string_view text,
                                                           const base::String& rootName) {
  AgFactory scratch;
  return xml2map(Importer(scratch).import(text), rootName);
}

std::map<base::String, base::String> XMLConverter::xml2map(const AgElement* element,
                                                           const base::String& rootName) {
  std::map<base::String, base::String> values;
  if (element == nullptr || element->name_ != rootName.view()) {
    return values;
  }
  for (const AgElement* child = element->firstChild_; child != nullptr;
       child = child->nextSibling_) {
    values.insert_or_assign(base::String(child->name_), base::String(child->text_));
  }
  return values;
}

}  // namespace noxxml
