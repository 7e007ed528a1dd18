#pragma once

#include "core/any_regular.hpp"
#include "platform/core/connection.hpp"

#include <boost/signals2/connection.hpp>

#include <functional>
#include <memory>
#include <vector>

namespace vorlen {
class sheet_t;
}

namespace qormarltess {

/// Ties the cells of a view's sheets to its widgets, both ways:
/// - a view: a cell's value reaches a widget, now and on every change (a sheet monitor);
/// - a controller: a user change of a widget sets a cell and updates its sheet;
/// - enabling: a widget follows whether its cell still counts (`monitor_enabled`).
///
/// Names resolve against the sheets in the order they were added: the view's model sheet
/// first, then the layouts' own sheets. The assemblage holds every connection it made and ends
/// them when it is cleared or destroyed, which must happen before its widgets or sheets go.
class Assemblage {
public:
    using ValueView = std::function<void(const vorlen::any_regular_t&)>;
    using EnabledView = std::function<void(bool)>;

    Assemblage() = default;
    Assemblage(const Assemblage&) = delete;
    Assemblage& operator=(const Assemblage&) = delete;
    ~Assemblage();

    void AddSheet(std::shared_ptr<vorlen::sheet_t> sheet);
    const std::vector<std::shared_ptr<vorlen::sheet_t>>& GetSheets() const { return sheets_; }

    /// The first sheet with an input or an output of that name; null when none has it.
    vorlen::sheet_t* FindSheet(vorlen::name_t cell) const;
    /// The first sheet with an input of that name; null when none has it.
    vorlen::sheet_t* FindInputSheet(vorlen::name_t cell) const;

    /// Calls `view` with the cell's value now and after every change. Throws
    /// `std::logic_error` "no cell named 'x' to bind" when no sheet has the cell.
    void BindView(vorlen::name_t cell, ValueView view);
    /// Calls `view` with whether a control of the input should be enabled. Does nothing for a
    /// cell that is no input (an output computed by the sheet is always shown enabled).
    void BindEnabled(vorlen::name_t cell, EnabledView view);

    /// A controller's write: sets the input and updates its sheet, then runs what was given to
    /// `SetAfterWrite` (the view's pending visibility changes). A failure of the sheet, or a
    /// cell that no sheet has as input, is traced and leaves the sheet as the failure left it:
    /// a click must not take the editor down.
    void SetCell(vorlen::name_t cell, const vorlen::any_regular_t& value);
    void SetAfterWrite(std::function<void()> after) { afterWrite_ = std::move(after); }

    void Hold(boost::signals2::connection connection);
    void Hold(qorcore::Connection connection);

    /// Ends every connection and lets go of the sheets.
    void Clear();

private:
    std::vector<std::shared_ptr<vorlen::sheet_t>> sheets_;
    std::vector<boost::signals2::scoped_connection> cellConnections_;
    std::vector<qorcore::ScopedConnection> controlConnections_;
    std::function<void()> afterWrite_;
};

} // namespace qormarltess
