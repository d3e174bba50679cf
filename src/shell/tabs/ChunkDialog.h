#pragma once

#include "knowledge/ChunkCard.h"

#include <QDialog>

namespace ombrel {

// One chunk to be read, with all its text to select and copy. It keeps its own copy of the texts.
class ChunkDialog final : public QDialog {
    Q_OBJECT

  public:
    ChunkDialog(const ChunkCard& card, const QString& documentName, QWidget* parent);
};

} // namespace ombrel
