// Pivot tables under construction, and their way into the report.
#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "embedded/HostSession.h"
#include "embedded/output/ItemData.h"
#include "embedded/output/Report.h"
#include "host/Output.h"

using embedded::ReportAxis;
using embedded::ReportCell;
using embedded::ReportDimension;
using embedded::ReportHeading;
using embedded::ReportTable;

struct BpNode {
    std::size_t fDimension = 0;
    std::size_t fNumber = 0;  // in the table, as made
    BpItemData::Pointer fpHeading;
    bool fbShown = true;
    std::vector<BpItemData::Pointer> fvNotes;
    std::vector<std::unique_ptr<BpNode>> fvChildren;
    std::map<std::string, BpNode*> fByIdentity;  // the children; groups and categories apart
};

struct BpTableData {
    struct Dimension {
        ReportAxis fAxis = ReportAxis::Row;
        std::int32_t fOrder = 1;
        bool fbTitleShown = true;
        std::unique_ptr<BpNode> fpRoot;
        BpNode* fpCurrent = nullptr;  // made or selected last; null before the first heading
    };
    struct Cell {
        BpItemData::Pointer fpContent;  // null while there is only a note
        std::vector<BpItemData::Pointer> fvNotes;
    };
    /// Numbers of the nodes where a cell lies, one a dimension.
    using Place = std::vector<std::size_t>;

    BpItemData::Pointer fpTitle;
    std::string fIdentifier;
    BpItemData::Pointer fpCaption;
    std::int32_t fMinDataColumnWidth = 0;
    std::vector<Dimension> fvDimensions;
    std::map<Place, Cell> fCells;
    std::size_t fNodes = 0;

    std::unique_ptr<BpNode> MakeNode(std::size_t dimension, BpItemData::Pointer heading) {
        auto node = std::make_unique<BpNode>();
        node->fDimension = dimension;
        node->fNumber = fNodes++;
        node->fpHeading = std::move(heading);
        return node;
    }

    /// The child with this heading, found or made, and from now on the dimension's current one.
    BpNode* Select(BpNode* parent, const BpItem& heading, bool group) {
        const std::string identity =
            (group ? "group " : "category ") + embedded::HeadingIdentity(*heading.Data());
        BpNode*& child = parent->fByIdentity[identity];
        if (child == nullptr) {
            parent->fvChildren.push_back(MakeNode(parent->fDimension, heading.Data()));
            child = parent->fvChildren.back().get();
        }
        fvDimensions[parent->fDimension].fpCurrent = child;
        return child;
    }

    Cell& CellAt(const BpNode& category) {
        Place place;
        for (std::size_t d = 0; d < fvDimensions.size(); ++d) {
            const Dimension& dimension = fvDimensions[d];
            const BpNode* node = d == category.fDimension ? &category
                                 : dimension.fpCurrent    ? dimension.fpCurrent
                                                          : dimension.fpRoot.get();
            place.push_back(node->fNumber);
        }
        return fCells[place];
    }
};

namespace {

/// Turns a table under construction into one of the report.
class TableFinisher {
 public:
    TableFinisher(const BpTableData& table, bool fractionalWeights)
        : fTable(table), fbFractional(fractionalWeights) {}

    ReportTable Finish() {
        ReportTable out;
        out.fId = fTable.fIdentifier;
        out.fTitle = Text(fTable.fpTitle);
        if (fTable.fpCaption) out.fCaption = Text(fTable.fpCaption);
        out.fMinDataColumnWidth = fTable.fMinDataColumnWidth;
        for (const auto& dimension : fTable.fvDimensions)
            out.fvDimensions.push_back(FinishDimension(dimension));
        FindDecimalColumns();
        for (const auto& [place, cell] : fTable.fCells)
            out.fvCells.push_back(FinishCell(place, cell));
        SortByRows(out);
        return out;
    }

 private:
    std::string Text(const BpItemData::Pointer& item) const {
        return embedded::ItemText(*item, fbFractional);
    }

    std::vector<std::string> Texts(const std::vector<BpItemData::Pointer>& items) const {
        std::vector<std::string> out;
        for (const auto& item : items) out.push_back(Text(item));
        return out;
    }

    ReportDimension FinishDimension(const BpTableData::Dimension& dimension) {
        ReportDimension out;
        out.fName = embedded::ItemKeyText(*dimension.fpRoot->fpHeading);
        out.fTitle = Text(dimension.fpRoot->fpHeading);
        out.fAxis = dimension.fAxis;
        out.fOrder = dimension.fOrder;
        out.fbTitleShown = dimension.fbTitleShown;
        std::size_t leaves = 0;
        for (const auto& child : dimension.fpRoot->fvChildren)
            out.fvHeadings.push_back(FinishHeading(*child, leaves));
        if (leaves == 0) fLeafNumbers[dimension.fpRoot->fNumber] = 0;
        return out;
    }

    ReportHeading FinishHeading(const BpNode& node, std::size_t& leaves) {
        ReportHeading out;
        out.fText = Text(node.fpHeading);
        out.fKey = embedded::ItemKey(*node.fpHeading);
        out.fbShown = node.fbShown;
        out.fvNotes = Texts(node.fvNotes);
        if (node.fvChildren.empty()) fLeafNumbers[node.fNumber] = leaves++;
        for (const auto& child : node.fvChildren)
            out.fvChildren.push_back(FinishHeading(*child, leaves));
        return out;
    }

    /// The place of a cell in the columns alone.
    BpTableData::Place ColumnOf(const BpTableData::Place& place) const {
        BpTableData::Place column;
        for (std::size_t d = 0; d < place.size(); ++d)
            if (fTable.fvDimensions[d].fAxis == ReportAxis::Column) column.push_back(place[d]);
        return column;
    }

    // Ranks and degrees of freedom are counts too. They stay whole under fractional weights, and
    // decimals would only blur them: a column has them when one of its counts needs them.
    void FindDecimalColumns() {
        if (!fbFractional) return;
        for (const auto& [place, cell] : fTable.fCells)
            if (cell.fpContent && embedded::IsFractionalCount(*cell.fpContent))
                fDecimalColumns.insert(ColumnOf(place));
    }

    ReportCell FinishCell(const BpTableData::Place& place, const BpTableData::Cell& cell) const {
        ReportCell out;
        for (const std::size_t node : place) {
            const auto leaf = fLeafNumbers.find(node);
            if (leaf == fLeafNumbers.end())
                throw std::logic_error("pivot table " + fTable.fIdentifier +
                                       ": a cell lies at a heading that holds others");
            out.fvAt.push_back(leaf->second);
        }
        out.fvNotes = Texts(cell.fvNotes);
        if (cell.fpContent)
            embedded::FillCell(out, *cell.fpContent, fDecimalColumns.contains(ColumnOf(place)),
                               fbFractional);
        return out;
    }

    void SortByRows(ReportTable& table) const {
        std::vector<std::size_t> order = embedded::AxisDimensions(table, ReportAxis::Row);
        for (const std::size_t d : embedded::AxisDimensions(table, ReportAxis::Column))
            order.push_back(d);
        std::sort(table.fvCells.begin(), table.fvCells.end(),
                  [&order](const ReportCell& a, const ReportCell& b) {
                      for (const std::size_t d : order)
                          if (a.fvAt[d] != b.fvAt[d]) return a.fvAt[d] < b.fvAt[d];
                      return false;
                  });
    }

    const BpTableData& fTable;
    bool fbFractional;
    std::map<std::size_t, std::size_t> fLeafNumbers;  // by number of the node
    std::set<BpTableData::Place> fDecimalColumns;
};

}  // namespace

void BpCategory::Cell(const BpItem& content) const {
    fpTable->CellAt(*fpNode).fpContent = content.Data();
}

void BpCategory::CellNote(const BpItem& text) const {
    fpTable->CellAt(*fpNode).fvNotes.push_back(text.Data());
}

BpCategory BpGroup::Category(const BpItem& heading) const {
    return {fpTable, fpTable->Select(fpNode, heading, false)};
}

BpGroup BpGroup::Group(const BpItem& heading, std::int32_t showHeading,
                       std::int32_t /*level*/) const {
    BpNode* node = fpTable->Select(fpNode, heading, true);
    node->fbShown = showHeading != 0;
    return {fpTable, node};
}

void BpGroup::Note(const BpItem& text) const {
    if (fpTable->fvDimensions[fpNode->fDimension].fpRoot.get() == fpNode)
        throw std::logic_error("pivot table " + fpTable->fIdentifier +
                               ": a dimension's title carries no note");
    fpNode->fvNotes.push_back(text.Data());
}

BpDimension::BpDimension(BpPivotTable& table, const BpItem& title)
    : BpGroup(table.fpData.get(), nullptr) {
    if (!fpTable->fCells.empty())
        throw std::logic_error("pivot table " + fpTable->fIdentifier +
                               ": a dimension comes after the first cell");
    auto& dimension = fpTable->fvDimensions.emplace_back();
    dimension.fpRoot = fpTable->MakeNode(fpTable->fvDimensions.size() - 1, title.Data());
    fpNode = dimension.fpRoot.get();
}

void BpDimension::Position(std::int32_t axis, std::int32_t order, std::int32_t hideTitle,
                           std::int32_t /*reserved*/) const {
    auto& dimension = fpTable->fvDimensions[fpNode->fDimension];
    dimension.fAxis = axis == 0 ? ReportAxis::Row : ReportAxis::Column;
    dimension.fOrder = order;
    dimension.fbTitleShown = hideTitle == 0;
}

BpPivotTable::BpPivotTable(BpProcedure& /*procedure*/, const BpHeading& heading)
    : fpData(std::make_unique<BpTableData>()) {
    fpData->fpTitle = heading.fTitle.Data();
    fpData->fIdentifier = heading.fIdentifier;
}

BpPivotTable::~BpPivotTable() = default;

void BpPivotTable::SetCaption(const BpItem& caption) { fpData->fpCaption = caption.Data(); }

void BpPivotTable::SetMinDataColumnWidth(std::int32_t points) {
    fpData->fMinDataColumnWidth = points;
}

void BpPivotTable::Send() {
    auto& report = embedded::HostSession::Active().Report();
    report.fvItems.emplace_back(TableFinisher(*fpData, report.fbFractionalWeights).Finish());
}
