#pragma once

#include "shell/design/Tone.h"

#include <QIcon>
#include <QString>

namespace ombrel {

// An icon of the studio's family by the name of its file in icons/. It is drawn at any size in the
// colour of its tone, follows the theme, and takes the accent's colour where it is checked.
QIcon themeIcon(const QString& name, Tone tone = Tone::neutral);

// The same for a button that is filled with the accent's colour.
QIcon onAccentIcon(const QString& name);

} // namespace ombrel
