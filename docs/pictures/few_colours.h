// A picture in 256 colours, which takes half the room.
#ifndef DOV417_DOCS_PICTURES_FEW_COLOURS_H
#define DOV417_DOCS_PICTURES_FEW_COLOURS_H

#include <QImage>

namespace dov417 {

// Its most frequent colours; each of the others becomes the one that is nearest to it.
QImage inFewColours(const QImage& image);

} // namespace dov417

#endif
