#include "text/Regions.h"

namespace ZET::Text {

RegionPlace Regions::Take(Marker marker, std::size_t number) {
    RegionStep step = m_blocks.Take(marker, number);
    if (!IsOutside(step)) return {RegionKind::Block, step};
    step = m_notices.Take(marker, number);
    if (!IsOutside(step)) return {RegionKind::Notice, step};
    step = m_templateComments.Take(marker, number);
    if (!IsOutside(step)) return {RegionKind::TemplateComment, step};
    return {marker == Marker::FormerLine ? RegionKind::FormerLine : RegionKind::Ordinary, step};
}

std::size_t Regions::OpenSince(RegionKind kind) const {
    switch (kind) {
        case RegionKind::Block:
            return m_blocks.OpenedAt();
        case RegionKind::Notice:
            return m_notices.OpenedAt();
        case RegionKind::TemplateComment:
            return m_templateComments.OpenedAt();
        case RegionKind::Ordinary:
        case RegionKind::FormerLine:
            break;
    }
    return 0;
}

}  // namespace ZET::Text
