#pragma once

#include <QFont>
#include <QString>

#include <vector>

#include "LumoKit/export/SheetAnswers.h"
#include "LumoUI/settings/Theme.h"

class QPagedPaintDevice;

namespace lumo {

/// How a printed sheet looks: the colours of an appearance with the user's syntax colours,
/// and the editor's font family.
struct PrintLook {
    Appearance appearance = Appearance::light;
    SyntaxColorOverrides colors;
    QString fontFamily;
    /// The text's size in points.
    qreal textSize = 10;
};

/// Where one block of a page-flowed sheet goes: its page (0-based) and its top on the page.
struct BlockPlacement {
    int page = 0;
    qreal top = 0;

    bool operator==(const BlockPlacement&) const = default;
};

/// Flows blocks of the given heights down pages of `pageHeight`: a block that does not fit
/// in what is left of a page starts the next one, so no block is ever cut, unless it is taller
/// than a whole page, when it starts a page of its own and runs over.
std::vector<BlockPlacement> placeBlocks(const std::vector<qreal>& heights, qreal pageHeight);

/// Paints a sheet onto the pages of a printer or PDF writer as the editor shows it: each line
/// with its syntax colours, its answer right-aligned in a column, failures in their colour and
/// plots drawn under their lines, never cut by a page break. The sheet's name heads every page
/// and the page number ends it. Returns the number of pages.
int printSheet(QPagedPaintDevice& device, const EvaluatedSheet& sheet, const EvaluationOptions& options,
               const PrintLook& look);

} // namespace lumo
