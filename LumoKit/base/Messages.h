#pragma once

#include <string>
#include <vector>

#include "LumoKit/base/Language.h"

namespace lumo {

/// Every message the engine shows, one kind each. The texts live in one table in Messages.cpp;
/// the fragment kinds at the end are pieces inserted into other messages.
enum class MessageKind {
    verbatim, // not a message: a name or number inserted as written

    // Reading a line
    unusableCharacter,
    numberTooLarge,
    unclosedText,
    nestedTooDeeply,
    missingCallParenthesis,
    misplacedOperator,
    noExpression,
    badExpression,
    missingBracket,
    missingClosingParenthesis,
    noOpeningParenthesis,
    noOpeningBracket,
    misplacedComma,
    endsInTheMiddle,
    missingListBracket,
    missingTargetUnit,

    // Evaluating an expression
    unknownUnit,
    undefinedName,
    undefinedNameLikeUnit,
    noSuchFunction,
    listTooBig,
    textTooLong,
    lineNotFound,
    cannotNegate,
    operatorNotUsable,
    percentOnKind,
    percentOnUnit,
    unitOnKind,
    unitOnPercentage,
    unitOnUnit,
    cannotConvert,
    listsNotOrdered,
    kindsNotOrdered,
    indexNotWhole,
    indexTooLarge,
    noItemInEmpty,
    noItem,
    indexOnNumber,
    textJoin,
    repeatCountNotWhole,
    wholePowersOnly,
    unitsNotAddable,
    kindsNotCombinable,
    divisionByZero,
    exponentWithUnit,
    unitNotRaisable,
    cannotCalculate,
    cannotCalculateResult,

    // Built-in functions
    cannotTake,
    needsOneArgument,
    cannotTakeUnit,
    negativeSquareRoot,
    logOfNonPositive,
    digitsWithUnit,
    digitsOutOfRange,
    roundingUsage,
    needsValues,
    lenUsage,
    sortUsage,
    sortMixed,
    reverseUsage,
    needsAngle,
    outsideMinusOneToOne,
    powUsage,
    modUsage,
    modByZero,
    hypotUsage,
    integerPairUsage,
    tooLargeFor,
    zeroNotUsable,
    lcmTooLarge,

    // The sheet and its program
    unitsMixedInSum,
    sheetWordAsName,
    tooManySteps,
    takingTooLong,
    callsTooDeep,
    fromSheet,
    returnOutsideDef,
    notIterable,
    argumentCount,
    noReturnValue,
    rangeUsage,
    rangeKind,
    rangeUnit,
    rangeZeroStep,
    badCondition,
    noMatchingIf,
    badLoopRange,
    forNeedsOneName,
    badWhileCondition,
    defShape,
    defNames,
    badReturnValue,

    // Plots and charts
    plotNoExpression,
    plotOneEnd,
    plotLeftNotLess,
    plotNoCurve,
    plotNotCurve,
    surfaceArguments,
    plotNoSurface,
    chartNoValues,
    chartNotChartable,

    // Naming a line or a sheet
    enterName,
    nameCharacters,
    builtinWordName,
    functionName,
    constantName,
    unitName,
    builtinFunctionName,
    constantNameClash,
    nameUsedOnLine,
    newSheetName,
    conflictCopyName,

    // Reading a document file
    documentUnreadable,
    documentWrongType,
    documentTooDeep,
    documentNotJson,
    documentKeyMissing,

    // Fragments
    aNumber,
    aText,
    aList,
    theList,
    theText,
    thisCalculation,
    argumentWord,
    argumentsWord,
    anObject,
    aString,
    aDate,
    aUuid,
    anInteger,
    anArray,
};

/// A message of a kind, with what goes into its texts at {0}, {1}, … Each inserted part is
/// itself a message: a name or number written as it is, or a fragment put into the same
/// language as the message around it. Nothing is put into words until text() is asked for,
/// so a message made during a run reads no language setting.
class Message {
public:
    /// No message: the empty text.
    Message() : m_kind(MessageKind::verbatim) {}
    Message(MessageKind kind, std::vector<Message> arguments = {});
    /// A name or number, inserted as written.
    Message(std::string text);
    Message(const char* text);

    MessageKind kind() const { return m_kind; }
    const std::vector<Message>& arguments() const { return m_arguments; }

    std::string text(Language language) const;

    friend bool operator==(const Message&, const Message&) = default;

private:
    MessageKind m_kind;
    std::string m_verbatim;
    std::vector<Message> m_arguments;
};

} // namespace lumo
