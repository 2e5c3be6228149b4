/// @file FilmTable.h
/// What the generated films are known to hold; scripts/make-media makes them so.
#pragma once

#include "tests/support/ReferenceFilm.h"

#include <cstdint>
#include <string>
#include <vector>

/// A film whose pictures carry numbers.
struct NumberedFilmFacts
{
    const char* name;
    std::uint32_t num, den; ///< pictures a second; 0 = they come when they come, and their numbers are a clock
    std::uint32_t count;    ///< pictures shown
    std::uint32_t first;    ///< number of the first; the others follow in steps of one (variable: it is the clock's 0)
    double start;           ///< seconds: when the first one shows, from the container's start
    std::uint32_t clock;    ///< variable: numbers a second; 0 otherwise

    bool IsVariable() const { return num == 0; }
};
/// Lets a failing parameterised test tell its film.
void PrintTo(const NumberedFilmFacts& film, std::ostream* pStream);

const std::vector<NumberedFilmFacts>& NumberedFilms();

/// The numbers that may show in slot n of a grid; mostly one.
struct SlotExpectation
{
    std::uint32_t number = 0;
    /// Differs from number where a variable film's container rounds the picture's time past the slot's: by the rounded
    /// time one picture shows, by the true time the next.
    std::uint32_t alternative = 0;

    bool Holds(std::uint32_t seen) const { return seen == number || seen == alternative; }
};

/// Slot of a constant-rate grid in which a film's first picture shows: the first at or after its time.
/// @param time      seconds from the container's start
/// @param timeUnit  seconds; time stamps are rounded to it, so a picture that is late by as much is not late
std::size_t FirstSlot(double time, double timeUnit, double rate);

/// What shows in each slot of a grid of @p num / @p den pictures a second, from slot 0 to the end of the film: the
/// picture with the latest time that is not after the slot's, and before the first picture the first.
/// A film of constant rate keeps its step, each picture in a slot of its own, however its container rounds the times.
std::vector<SlotExpectation> ExpectedSlots(const NumberedFilmFacts& facts, const test_support::NumberedFilm& film,
                                           std::uint32_t num, std::uint32_t den);
