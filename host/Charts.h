#ifndef PREDSEL_HOST_CHARTS_H
#define PREDSEL_HOST_CHARTS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A text as the string table gives it, with the key that it was looked up by.
struct OlangString {
    std::string fKey;
    std::string fText;
};

/// The host's texts for procedures.
class FacSTDictionary {
 public:
    /// pathInstance: which of the host's paths holds the texts; 3 those of its procedures.
    explicit FacSTDictionary(std::int32_t pathInstance);
    /// The procedure whose texts are asked for.
    void SetProcedure(std::string_view name);
    /// Puts the text of a key into `out`; a key without a text is its own text.
    void Lookup(std::string_view key, OlangString& out) const;

 private:
    std::string fProcedure;
};

/// A text in a chart, in UTF-8. It remembers the string-table key that it came from, if any.
class ChartString {
 public:
    ChartString() = default;
    ChartString(std::string text, std::string key) : fText(std::move(text)), fKey(std::move(key)) {}

    void append(std::string_view text) { fText += text; }
    /// In the shortest form that reads back as the same number.
    void appendDouble(double value);
    void appendInteger(std::int32_t value);

    const std::string& Text() const { return fText; }
    /// Empty for texts of the data.
    const std::string& Key() const { return fKey; }

 private:
    std::string fText;
    std::string fKey;
};

/// Turns the host's other texts into those of charts.
class XUtility {
 public:
    static ChartString ChartStringFromOLANG(const OlangString& text);
    /// Of a name or label of the data; this host's code page is UTF-8.
    static ChartString ChartStringFromLocalCodePage(std::string_view text);
};

struct XChartData;  // a chart under construction, the host's

// XVariable to XGraph are handles into the chart of an XDocument: cheap to copy, and valid as long
// as the document.

/// One column of a chart's data table.
class XVariable {
 public:
    /// How values are written out. decimals: digits after the point; leadingZero: "0.05" and not
    /// ".05"; prefix and suffix: put around the number, null for none.
    void SetNumberFormat(std::int32_t decimals, bool leadingZero, const char* prefix,
                         const char* suffix) const;
    /// The text that stands for a code of a categorical variable.
    void addRelabel(std::int32_t code, const ChartString& label) const;

 private:
    friend class XGraph;
    friend class XElement;
    XVariable(XChartData* data, std::size_t column) : fpData(data), fColumn(column) {}
    XChartData* fpData;
    std::size_t fColumn;
};

/// One row of the data table. Values go in the order in which the variables were made.
class XRow {
 public:
    void AddCode(std::int32_t code) const;
    /// MCMV::gMissingValue draws nothing.
    void AddValue(double value) const;

 private:
    friend class XGraph;
    XRow(XChartData* data, std::size_t row) : fpData(data), fRow(row) {}
    XChartData* fpData;
    std::size_t fRow;
};

/// The x axis carries the categories, the y axis the numbers. The host may lay the categories out
/// from top to bottom, the highest code at the top, where that reads better.
class XAxis {
 public:
    void setTitle(const ChartString& title) const;
    /// The title is not drawn; it still names the axis for readers who cannot see the chart.
    void hideLabel() const;
    /// Whether neighbouring tick labels may be put in two rows.
    void setMajorTickStagger(bool stagger) const;
    /// Room before the first and after the last value, as a percentage of the axis: "10%". The
    /// upper end is the one that the values run to as drawn. Throws std::invalid_argument for
    /// another form.
    void setLowerMargin(std::string_view percent) const;
    void setUpperMargin(std::string_view percent) const;
    void AddMajorTicks() const;
    /// In points, for major and minor ticks.
    void setTickLabelFontSize(double major, double minor) const;
    /// Puts the ticks at round numbers; otherwise only the ends have one.
    void setNiceUpperMapping(bool nice) const;
    /// The values that the axis covers whatever the data: fixed is true, which this host asks for.
    /// Throws std::invalid_argument when it is not or when low is not below high.
    void setInterval(double low, double high, bool fixed) const;
    /// kind: 0 linear, which is all that this host draws, else std::invalid_argument. The other two
    /// speak of logarithmic scales: whether to keep zero in view, and the base.
    void setScale(std::int32_t kind, bool keepZero, double base) const;
    /// Draws the values from high to low. A longer bar is a better one: of significances, which are
    /// better the lower, bars start at `origin`; of all other statistics at the interval's other
    /// end. The host tells significances by the key of the axis' title.
    void invertScale(double origin) const;

 private:
    friend class XGraph;
    XAxis(XChartData* data, bool categories) : fpData(data), fbCategories(categories) {}
    XChartData* fpData;
    bool fbCategories;
};

/// What kind of mark an element draws.
class CTElementType {
 public:
    /// Where marks of several colours at one category stand: 0 one over the other, 1 stacked in one
    /// place of full width, 2 side by side. Alike where each category has one row.
    void setPositionModifier(std::int32_t modifier) const;

 private:
    friend class XElement;
    explicit CTElementType(XChartData* /*data*/) {}
};

/// Element types by the host's numbers.
inline constexpr std::int32_t kElementBar = 0;

/// The marks that show the rows.
class XElement {
 public:
    CTElementType GetElementType() const;
    /// unit: 2 percent of the room between two categories; width in that unit; lowest and highest
    /// width in points, 0 for none.
    void SetWidth(std::int32_t unit, double width, double lowest, double highest) const;
    /// Colours the marks by the codes of a variable: code i gets colours[i] (0xRRGGBB), or the
    /// host's own when the list is empty. legend 1 shows a legend under that title.
    void colorByVariable(const XVariable& variable, const std::vector<std::uint32_t>& colours,
                         std::int32_t legend, const ChartString& legendTitle) const;
    void AddX(const XVariable& variable) const;
    void AddY(const XVariable& variable) const;

 private:
    friend class XGraph;
    explicit XElement(XChartData* data) : fpData(data) {}
    XChartData* fpData;
};

/// The graph of a chart: data, axes, marks.
class XGraph {
 public:
    XVariable addCategoricalVariable(const ChartString& name) const;
    XVariable addNumericVariable(const ChartString& name) const;
    XRow addRow() const;
    /// The graph has one element. type: kElementBar, else std::invalid_argument.
    XElement addElement(std::int32_t type) const;
    XAxis getXAxis() const;
    XAxis getYAxis() const;
    /// Height of the frame around the marks, in standard frames of 20 bars each.
    void setOuterFrameHeight(double frames) const;
    /// A line across the chart at a value of y. style: "dash", else std::invalid_argument. Lines
    /// are drawn once FinishReferenceLines has been called.
    void AddYReferenceLine(double value, std::string_view style) const;
    void FinishReferenceLines() const;
    void SetFirstFootnote(const ChartString& text) const;
    void SetSecondFootnote(const ChartString& text) const;

 private:
    friend class XDocument;
    explicit XGraph(XChartData* data) : fpData(data) {}
    XVariable AddVariable(const ChartString& name, bool isNumeric) const;
    XChartData* fpData;
};

/// A chart under construction. SendChart puts it in the output; without it nothing is shown, and it
/// throws std::logic_error when the element, an axis' variable or a value of a row is missing.
class XDocument {
 public:
    XDocument();
    virtual ~XDocument();
    XDocument(const XDocument&) = delete;
    XDocument& operator=(const XDocument&) = delete;

    /// The chart's title.
    virtual void SetDescription(const ChartString& text);
    virtual void SetDescription(std::string_view text);
    virtual XGraph getGraph();
    /// show: false goes through all the motions and leaves the chart out of the output. editable
    /// and linked ask for what this host does not offer and change nothing.
    virtual void SendChart(bool show, bool editable, bool linked);
    /// Words for readers who cannot see the chart, put before those that the host finds itself.
    virtual void SetComment(std::string_view text);
    /// The name by which programs know the chart; by default its title's key without blanks.
    virtual void SetName(std::string_view name);
    /// Asks that nobody edit the chart. This host's charts never are.
    virtual void doNotModify();
    /// Looks and data from outside: true when taken. This host takes none.
    virtual bool SetChartTemplate(std::string_view path);
    virtual bool AddCSVFile(std::string_view path);
    virtual bool AddImmediateTemplate(std::string_view text);
    /// A graph that another program draws; none in this host.
    virtual std::optional<XGraph> getExternalGraph();

 protected:
    /// The steps of SendChart. SendContent calls the three that follow it; SendDone hands over.
    virtual void SendContent();
    virtual void SendDescription();
    virtual void SendXML();
    virtual void SendData();
    virtual void SendDone();
    /// Charts in the output of the running command so far.
    virtual std::int32_t SendCount() const;

    const XChartData& ChartData() const { return *fpData; }

 private:
    std::unique_ptr<XChartData> fpData;
};

#endif  // PREDSEL_HOST_CHARTS_H
