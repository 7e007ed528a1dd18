#include "platform/tess/assemblage.hpp"

#include "platform/core/trace.hpp"
#include "sheet/sheet.hpp"

#include <stdexcept>
#include <string>

namespace qormarltess {

using vorlen::any_regular_t;
using vorlen::name_t;
using vorlen::sheet_t;

Assemblage::~Assemblage() {
    Clear();
}

void Assemblage::AddSheet(std::shared_ptr<sheet_t> sheet) {
    if (sheet)
        sheets_.push_back(std::move(sheet));
}

sheet_t* Assemblage::FindSheet(name_t cell) const {
    for (const auto& sheet : sheets_)
        if (sheet->has_input(cell) || sheet->has_output(cell))
            return sheet.get();
    return nullptr;
}

sheet_t* Assemblage::FindInputSheet(name_t cell) const {
    for (const auto& sheet : sheets_)
        if (sheet->has_input(cell))
            return sheet.get();
    return nullptr;
}

void Assemblage::BindView(name_t cell, ValueView view) {
    sheet_t* sheet = FindSheet(cell);
    if (!sheet)
        throw std::logic_error(std::string("no cell named '") + cell.c_str() + "' to bind");
    cellConnections_.emplace_back(sheet->monitor_value(cell, view));
}

void Assemblage::BindEnabled(name_t cell, EnabledView view) {
    sheet_t* sheet = FindInputSheet(cell);
    if (!sheet)
        return;
    // For a cell that a relation may fill, the sheet tells which side of the relation holds
    // its value now, not whether the user may change it: touching it turns the relation round.
    // Such a control stays enabled.
    if (sheet->has_relation(cell)) {
        view(true);
        return;
    }
    cellConnections_.emplace_back(sheet->monitor_enabled(cell, &cell, &cell + 1, view));
}

void Assemblage::SetCell(name_t cell, const any_regular_t& value) {
    static qorcore::debug::TraceSite site;
    constexpr const char* category = "Assemblage::SetCell";
    sheet_t* sheet = FindInputSheet(cell);
    if (!sheet) {
        if (site.IsEnabled(category, 5))
            qorcore::debug::Trace(5, category,
                                  std::string("no input cell named '") + cell.c_str() + "'\n");
        return;
    }
    try {
        sheet->set(cell, value);
        sheet->update();
    } catch (const std::exception& error) {
        if (site.IsEnabled(category, 5))
            qorcore::debug::Trace(5, category,
                                  std::string(cell.c_str()) + ": " + error.what() + "\n");
        return;
    }
    if (afterWrite_)
        afterWrite_();
}

void Assemblage::Hold(boost::signals2::connection connection) {
    cellConnections_.emplace_back(std::move(connection));
}

void Assemblage::Hold(qorcore::Connection connection) {
    controlConnections_.emplace_back(std::move(connection));
}

void Assemblage::Clear() {
    // Widgets first lose their way into the sheets, then the sheets go.
    controlConnections_.clear();
    cellConnections_.clear();
    sheets_.clear();
    afterWrite_ = nullptr;
}

} // namespace qormarltess
