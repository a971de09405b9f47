// What moves, rests and calms a body: activity to habitraWorkout. The columns are explained in HealthTypeTable.h.
//
// Sources of the usual amounts:
// - times of exercise, workouts and moving: WHO guidelines on physical activity and sedentary behaviour (2020), 150 to
//   300 minutes of moderate activity a week; 30 minutes a day lie between;
// - sleep: consensus of the American Academy of Sleep Medicine and the Sleep Research Society (2015), 7 hours or more
//   for adults; 8 is the round figure above it, and time in bed includes some that is not slept;
// - standing minutes: the expert statement on sedentary office work in the British Journal of Sports Medicine (2015), 2
//   hours a working day to begin with;
// - standing and rolling hours: some movement in each of 12 waking hours;
// - steps: 10,000, the number that people expect; it comes from no guideline.
// Distances, flights, pushes and energies are round middling figures of our own. Usual amounts of one type in several
// units that measure the same are the same amount, as near as the steps allow.

#include <HabitraCore/AutomaticTaskType/HealthTypeTable.h>

namespace habitra {

namespace {

using T = HealthType;
using U = TypeUnit;
using S = TypeSpeed;
using O = qz::QZHKObjectType;
using Selection = HealthType::SpeedSelectionType;
using Statistics = qz::QZHKStatisticsOptions;
using Update = qz::QZHKUpdateFrequency;

constexpr std::array<HealthTypeRow, numActivityRows> rows{{
    {
        .type = T::activity,
        .measured = Measured::rings,
        .reads = {O::activitySummary},
        .statistics = {},
        .update = Update::hourly,
        .icons = {"ic_activity_rings", "ic_ring", "ic_flame"},
        .title = TitleForm::activityRings,
    },
    {
        .type = T::sleep,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::durationHours, .lowest = 0.25, .highest = 16, .step = 0.25, .usual = 8, .steps = timeSteps},
                {.unit = U::durationMinutes, .lowest = 5, .highest = 960, .step = 5, .usual = 480, .steps = timeSteps},
            },
        .speeds = {S::sleepAsleep, S::sleepCore, S::sleepDeep, S::sleepREM, S::inBed},
        .speedSelection = Selection::multi,
        .defaultSpeeds = {S::sleepAsleep},
        .reads = {O::sleepAnalysis},
        .statistics = Statistics::duration,
        .update = Update::immediate,
        .icons = {"ic_sleep", "ic_moon", "ic_bed"},
        .title = TitleForm::sleep,
    },
    {
        .type = T::inBed,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::durationHours, .lowest = 0.25, .highest = 16, .step = 0.25, .usual = 8, .steps = timeSteps},
                {.unit = U::durationMinutes, .lowest = 5, .highest = 960, .step = 5, .usual = 480, .steps = timeSteps},
            },
        .reads = {O::sleepAnalysis},
        .statistics = Statistics::duration,
        .update = Update::immediate,
        .icons = {"ic_bed", "ic_sleep", "ic_moon"},
        .title = TitleForm::inBed,
    },
    {
        // Quarters of an hour from 00:00 to 23:45; 22:30.
        .type = T::bedtime,
        .measured = Measured::timeOfDay,
        .quantities = {{.unit = U::timeOfDay, .lowest = 0, .highest = 85'500, .step = 900, .usual = 81'000}},
        .speeds = {S::asleepBefore, S::asleepAfter, S::awakeBefore, S::awakeAfter, S::inBedBefore, S::inBedAfter,
                   S::outOfBedBefore, S::outOfBedAfter},
        .speedSelection = Selection::single,
        .defaultSpeeds = {S::asleepBefore},
        .reads = {O::sleepAnalysis},
        .statistics = {},
        .update = Update::immediate,
        .icons = {"ic_bedtime", "ic_moon", "ic_alarm", "ic_bed"},
        .title = TitleForm::bedtime,
    },
    {
        .type = T::standHours,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::durationHours, .lowest = 1, .highest = 24, .step = 1, .usual = 12, .steps = singleSteps},
            },
        .reads = {O::standHour},
        .statistics = Statistics::duration,
        .update = Update::hourly,
        .icons = {"ic_stand", "ic_person_standing"},
        .title = TitleForm::standHours,
    },
    {
        .type = T::standMinutes,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::durationMinutes, .lowest = 5, .highest = 960, .step = 5, .usual = 120, .steps = timeSteps},
            },
        .reads = {O::standTime},
        .statistics = Statistics::cumulativeSum,
        .update = Update::hourly,
        .icons = {"ic_stand", "ic_person_standing"},
        .title = TitleForm::standMinutes,
    },
    {
        .type = T::rollHours,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::durationHours, .lowest = 1, .highest = 24, .step = 1, .usual = 12, .steps = singleSteps},
            },
        .reads = {O::rollHour},
        .statistics = Statistics::duration,
        .update = Update::hourly,
        .icons = {"ic_wheelchair_roll", "ic_wheelchair"},
        .title = TitleForm::rollHours,
    },
    {
        // All movement, of which brisk movement is only a part: twice the time of exercise.
        .type = T::moveMinutes,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::durationMinutes, .lowest = 5, .highest = 960, .step = 5, .usual = 60, .steps = timeSteps},
            },
        .reads = {O::moveTime},
        .statistics = Statistics::cumulativeSum,
        .update = Update::hourly,
        .icons = {"ic_move", "ic_person_walking"},
        .title = TitleForm::moveMinutes,
    },
    {
        .type = T::runOrWalk,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::steps, .lowest = 500, .highest = 100'000, .step = 500, .usual = 10'000},
                {.unit = U::distanceKm,
                 .lowest = 0.5,
                 .highest = 100,
                 .step = 0.5,
                 .usual = 5,
                 .reads = {O::distanceWalkingRunning}},
                {.unit = U::distanceMeters,
                 .lowest = 100,
                 .highest = 100'000,
                 .step = 100,
                 .usual = 5'000,
                 .reads = {O::distanceWalkingRunning}},
                {.unit = U::distanceMiles,
                 .lowest = 0.25,
                 .highest = 60,
                 .step = 0.25,
                 .usual = 3,
                 .steps = wholeSteps,
                 .reads = {O::distanceWalkingRunning}},
                {.unit = U::distanceYards,
                 .lowest = 100,
                 .highest = 100'000,
                 .step = 100,
                 .usual = 5'500,
                 .reads = {O::distanceWalkingRunning}},
            },
        .speeds = {S::walk, S::run},
        .speedSelection = Selection::multi,
        .defaultSpeeds = {S::walk, S::run},
        .reads = {O::stepCount},
        .readsToTellSpeeds = {O::workout},
        .statistics = Statistics::cumulativeSum,
        .update = Update::hourly,
        .icons = {"ic_steps", "ic_person_walking", "ic_person_running", "ic_shoe"},
        .title = TitleForm::walkOrRun,
    },
    {
        .type = T::climbFlights,
        .measured = Measured::amount,
        .quantities = {{.unit = U::flights, .lowest = 1, .highest = 200, .step = 1, .usual = 10}},
        .reads = {O::flightsClimbed},
        .statistics = Statistics::cumulativeSum,
        .update = Update::hourly,
        .icons = {"ic_stairs", "ic_steps"},
        .title = TitleForm::climbFlights,
    },
    {
        .type = T::burnActiveEnergy,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::calories, .lowest = 10, .highest = 5'000, .step = 10, .usual = 400},
                {.unit = U::kilojoules, .lowest = 50, .highest = 20'000, .step = 50, .usual = 1'700},
            },
        .reads = {O::activeEnergyBurned},
        .statistics = Statistics::cumulativeSum,
        .update = Update::hourly,
        .icons = {"ic_flame", "ic_energy"},
        .title = TitleForm::activeEnergy,
    },
    {
        .type = T::wheelchairDistance,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::distanceKm, .lowest = 0.5, .highest = 100, .step = 0.5, .usual = 2, .steps = wholeSteps},
                {.unit = U::distanceMeters, .lowest = 100, .highest = 100'000, .step = 100, .usual = 2'000},
                {.unit = U::distanceMiles,
                 .lowest = 0.25,
                 .highest = 60,
                 .step = 0.25,
                 .usual = 1.25,
                 .steps = wholeSteps},
                {.unit = U::distanceYards, .lowest = 100, .highest = 100'000, .step = 100, .usual = 2'200},
            },
        .reads = {O::distanceWheelchair},
        .statistics = Statistics::cumulativeSum,
        .update = Update::hourly,
        .icons = {"ic_wheelchair", "ic_wheelchair_roll"},
        .title = TitleForm::wheelchairDistance,
    },
    {
        .type = T::wheelchairPushes,
        .measured = Measured::amount,
        .quantities = {{.unit = U::pushes, .lowest = 100, .highest = 50'000, .step = 100, .usual = 2'000}},
        .reads = {O::pushCount},
        .statistics = Statistics::cumulativeSum,
        .update = Update::hourly,
        .icons = {"ic_wheelchair_roll", "ic_wheelchair"},
        .title = TitleForm::wheelchairPushes,
    },
    {
        // 30 minutes, or what they burn at a brisk pace.
        .type = T::workout,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::durationMinutes, .lowest = 5, .highest = 960, .step = 5, .usual = 30, .steps = timeSteps},
                {.unit = U::durationHours,
                 .lowest = 0.25,
                 .highest = 16,
                 .step = 0.25,
                 .usual = 0.5,
                 .steps = timeSteps},
                {.unit = U::calories, .lowest = 10, .highest = 5'000, .step = 10, .usual = 250},
                {.unit = U::kilojoules, .lowest = 50, .highest = 20'000, .step = 50, .usual = 1'050},
            },
        .quantityIsOptional = true,
        .reads = {O::workout},
        .statistics = Statistics::duration,
        .update = Update::immediate,
        .icons = {"ic_workout", "ic_dumbbell", "ic_person_running"},
        .title = TitleForm::workout,
    },
    {
        .type = T::exercise,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::durationMinutes, .lowest = 5, .highest = 960, .step = 5, .usual = 30, .steps = timeSteps},
                {.unit = U::durationHours,
                 .lowest = 0.25,
                 .highest = 16,
                 .step = 0.25,
                 .usual = 0.5,
                 .steps = timeSteps},
            },
        .reads = {O::exerciseTime},
        .statistics = Statistics::cumulativeSum,
        .update = Update::hourly,
        .icons = {"ic_exercise", "ic_person_running", "ic_heart"},
        .title = TitleForm::exercise,
    },
    {
        .type = T::cycle,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::distanceKm, .lowest = 0.5, .highest = 500, .step = 0.5, .usual = 10},
                {.unit = U::distanceMiles, .lowest = 0.5, .highest = 300, .step = 0.5, .usual = 6, .steps = wholeSteps},
            },
        .reads = {O::distanceCycling},
        .statistics = Statistics::cumulativeSum,
        .update = Update::hourly,
        .icons = {"ic_bicycle", "ic_person_cycling"},
        .title = TitleForm::cycle,
    },
    {
        // Lengths of a short pool.
        .type = T::swimDistance,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::distanceMeters, .lowest = 25, .highest = 20'000, .step = 25, .usual = 1'000},
                {.unit = U::distanceYards, .lowest = 25, .highest = 20'000, .step = 25, .usual = 1'100},
            },
        .reads = {O::distanceSwimming},
        .statistics = Statistics::cumulativeSum,
        .update = Update::hourly,
        .icons = {"ic_swim", "ic_person_swimming", "ic_waves"},
        .title = TitleForm::swim,
    },
    {
        // Ten minutes to begin with; a habit, not a dose.
        .type = T::mindfulMinutes,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::durationMinutes, .lowest = 1, .highest = 240, .step = 1, .usual = 10},
                {.unit = U::durationSeconds, .lowest = 30, .highest = 14'400, .step = 30, .usual = 600},
                {.unit = U::durationHours,
                 .lowest = 0.25,
                 .highest = 4,
                 .step = 0.25,
                 .usual = 0.25,
                 .steps = timeSteps},
            },
        .speeds = {S::timed},
        .speedSelection = Selection::single,
        .defaultSpeeds = {S::timed},
        .reads = {O::mindfulSession},
        .statistics = Statistics::duration,
        .update = Update::immediate,
        .writesBack = true,
        .icons = {"ic_meditate", "ic_breathe", "ic_lotus"},
        .title = TitleForm::mindfulMinutes,
    },
    {
        .type = T::habitraWorkout,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::durationMinutes, .lowest = 5, .highest = 960, .step = 5, .usual = 30, .steps = timeSteps},
                {.unit = U::durationHours,
                 .lowest = 0.25,
                 .highest = 16,
                 .step = 0.25,
                 .usual = 0.5,
                 .steps = timeSteps},
            },
        .reads = {O::workout},
        .statistics = Statistics::duration,
        .update = Update::immediate,
        .writesBack = true,
        .icons = {"ic_workout", "ic_dumbbell", "ic_stopwatch"},
        .title = TitleForm::ownWorkout,
    },
}};

static_assert(isRunOfTypes(rows, T::activity));

}  // namespace

std::span<const HealthTypeRow, numActivityRows> activityRows() { return rows; }

}  // namespace habitra
