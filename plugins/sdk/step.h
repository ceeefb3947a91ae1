#ifndef PLUGIN_STEP_H
#define PLUGIN_STEP_H

#include "sdk/picture.h"
#include "sdk/settings.h"

namespace Plugin
{
/// How the lists of a kind are reached in the store.
template <typename Parameter, typename Values, Parameter *(ArithmParamMgr::*fnParameter)(int),
          Values (Parameter::*fnRead)() const, void (Parameter::*fnWrite)(const Values &)>
struct ListAccess {
    using List = Values;
    static Parameter &parameter(ArithmParamMgr &cStore, int nID) { return *(cStore.*fnParameter)(nID); }
    static List read(const Parameter &cParameter) { return (cParameter.*fnRead)(); }
    static void write(Parameter &cParameter, const List &lstValue) { (cParameter.*fnWrite)(lstValue); }
};

template <Kind eKind>
struct ListOf;
template <>
struct ListOf<Kind::Points>
    : ListAccess<ParamPoints, QList<ParamPoints::Point>, &ArithmParamMgr::getParamPoints,
                 &ParamPoints::getPoints, &ParamPoints::setPoints> {
};
template <>
struct ListOf<Kind::Lines> : ListAccess<ParamLines, QList<ParamLines::Line>, &ArithmParamMgr::getParamLines,
                                        &ParamLines::getLines, &ParamLines::setLines> {
};
template <>
struct ListOf<Kind::Polys> : ListAccess<ParamPolys, QList<ParamPolys::Poly>, &ArithmParamMgr::getParamPolys,
                                        &ParamPolys::getPolys, &ParamPolys::setPolys> {
};
template <>
struct ListOf<Kind::Areas> : ListAccess<ParamAreas, QList<ParamAreas::Area>, &ArithmParamMgr::getParamAreas,
                                        &ParamAreas::getAreas, &ParamAreas::setAreas> {
};
template <>
struct ListOf<Kind::Strings> : ListAccess<ParamStrings, QList<QString>, &ArithmParamMgr::getParamStrings,
                                          &ParamStrings::getStrings, &ParamStrings::setStrings> {
};
template <>
struct ListOf<Kind::Longs> : ListAccess<ParamLongs, QList<long>, &ArithmParamMgr::getParamLongs,
                                        &ParamLongs::getLongs, &ParamLongs::setLongs> {
};
template <>
struct ListOf<Kind::Doubles> : ListAccess<ParamDoubles, QList<double>, &ArithmParamMgr::getParamDoubles,
                                          &ParamDoubles::getDoubles, &ParamDoubles::setDoubles> {
};
template <>
struct ListOf<Kind::Bools> : ListAccess<ParamBools, QList<bool>, &ArithmParamMgr::getParamBools,
                                        &ParamBools::getBools, &ParamBools::setBools> {
};

/// One call of an algorithm: its settings and, through them, the inputs and outputs in the task's
/// store. Used by the thread of the call only.
class Step : public Settings
{
public:
    Step(std::string_view strConfig, ArithmParamMgr &cStore) : Settings(strConfig), m_cStore(cStore) {}

    using Settings::operator[];
    /// The store's own pixels: nothing is copied. Throws when the picture is empty.
    Picture operator[](const PictureInput &cSetting) const;
    /// A copy that is shared until one side changes.
    template <Kind eKind>
    typename ListOf<eKind>::List operator[](const ListInput<eKind> &cSetting) const
    {
        return ListOf<eKind>::read(ListOf<eKind>::parameter(m_cStore, id(cSetting)));
    }
    /// Calls fnBody with the store's own list, of whatever kind it is; nothing is copied. Throws when
    /// there is none.
    template <typename Body>
    auto visit(const AnyListInput &cSetting, Body fnBody) const
    {
        using Store = ArithmParamMgr;
        switch (kind(cSetting)) {
        case Kind::Lines:
            return fnBody(list(cSetting, &Store::m_mapParamLines, &ParamLines::m_lstLines));
        case Kind::Polys:
            return fnBody(list(cSetting, &Store::m_mapParamPolys, &ParamPolys::m_lstPolys));
        case Kind::Areas:
            return fnBody(list(cSetting, &Store::m_mapParamAreas, &ParamAreas::m_lstAreas));
        case Kind::Strings:
            return fnBody(list(cSetting, &Store::m_mapParamStrings, &ParamStrings::m_lstStrings));
        case Kind::Longs:
            return fnBody(list(cSetting, &Store::m_mapParamLongs, &ParamLongs::m_lstLongs));
        case Kind::Doubles:
            return fnBody(list(cSetting, &Store::m_mapParamDoubles, &ParamDoubles::m_lstDoubles));
        case Kind::Bools:
            return fnBody(list(cSetting, &Store::m_mapParamBools, &ParamBools::m_lstBools));
        default:
            return fnBody(list(cSetting, &Store::m_mapParamPoints, &ParamPoints::m_lstPoints));
        }
    }

    /// The output, made that large and given its name, on the store's own pixels; nothing is
    /// allocated while the size stays. The pixels are undefined, unless the picture is the very
    /// input (compare the pointers): then the step works in place. Throws when there is no memory.
    Picture resized(const PictureOutput &cSetting, int nWidth, int nHeight) const;
    template <Kind eKind>
    void write(const ListOutput<eKind> &cSetting, const typename ListOf<eKind>::List &lstValue) const
    {
        auto &cParameter = ListOf<eKind>::parameter(m_cStore, id(cSetting));
        setTitle(cParameter, cSetting);
        ListOf<eKind>::write(cParameter, lstValue);
    }

private:
    template <typename Parameter, typename List>
    const List &list(const Setting &cSetting, QMap<int, Parameter *> ArithmParamMgr::*mapParameter,
                     List Parameter::*lstValue) const
    {
        const int nID = id(cSetting);
        const Parameter *const pcParameter = (m_cStore.*mapParameter).value(nID);
        if (!pcParameter)
            throw Error("Input list " + std::to_string(nID) + " does not exist among the " +
                        kindName(kind(cSetting)) + ".");
        return pcParameter->*lstValue;
    }
    void setTitle(ArithmParam &cParameter, const Setting &cSetting) const;

    ArithmParamMgr &m_cStore;
};
} // namespace Plugin

#endif
