#pragma once

#include <optional>
#include <string_view>

namespace installer::xml {

// Takes what a document says: its elements, with their names as they are written but without their
// attributes, and their texts. Each answers whether there is any use in going on.
class ElementReceiver {
 public:
  // The document is read from its beginning: what was told before does not count.
  virtual void begin() = 0;
  virtual bool open(std::string_view name) = 0;
  virtual bool text(std::string_view text) = 0;  // one may come in pieces
  virtual bool close() = 0;

 protected:
  ElementReceiver() = default;
  ElementReceiver(const ElementReceiver&) = default;
  ElementReceiver& operator=(const ElementReceiver&) = default;
  ~ElementReceiver() = default;
};

// Whether the document is well-formed, within the bounds (see Parser), and wanted to its end. One
// that declares anything but its type, or uses entities of its own, is not; nothing outside it is
// ever loaded. `usualType` is the declaration of the type that such documents mostly have.
[[nodiscard]] bool readElements(std::string_view bytes, std::string_view usualType,
                                ElementReceiver& receiver);

// The two ways in which that is done. nullopt for a document that is not plain (see PlainReader) or
// of another type.
[[nodiscard]] std::optional<bool> readPlainElements(std::string_view bytes,
                                                    std::string_view usualType,
                                                    ElementReceiver& receiver);
[[nodiscard]] bool readAnyElements(std::string_view bytes, ElementReceiver& receiver);

}  // namespace installer::xml
