#pragma once

#include "Classification/ColorMap.hpp"
#include "Geometry/ChangeProjection.hpp"
#include "Geometry/SunburstGeometry.hpp"
#include "Geometry/SunburstLabels.hpp"
#include "Geometry/SunburstLayout.hpp"
#include "History/PeriodChanges.hpp"

#include <QColor>
#include <QFont>
#include <QImage>
#include <QSize>

#include <memory>
#include <optional>
#include <unordered_map>

namespace tarnwick {

class ScanTree;

// The map's still picture: its sectors, the changes over them and the sectors' names. Made
// from a scene that holds its parts by value or shared read-only, so a large preview can be
// drawn on a worker while the window stays responsive, and hovering paints over the result.
namespace MapPicture {

using ChangeMap = std::unordered_map<NodeID, PeriodChanges::NodeChange>;

struct Scene {
    std::shared_ptr<const ScanTree> tree;
    SunburstLayout layout;
    SunburstGeometry geometry;
    std::shared_ptr<const ColorMap> colors; // null: neutral tones until the colours are made
    std::shared_ptr<const ChangeMap> changes;
    std::optional<ChangeProjection> projection;
    QSize size;
    double pixelRatio = 1;
    QFont font;
};

QImage draw(const Scene& scene);
// The colour a sector is filled with.
QColor fill(const Scene& scene, const SunburstSector& sector);
// The colour a sector's name is written in: one that reads on the sector as drawn.
QColor labelColor(const Scene& scene, const SunburstSector& sector);
// Where the sectors' names go.
SunburstLabels placeLabels(const Scene& scene);

}

}
