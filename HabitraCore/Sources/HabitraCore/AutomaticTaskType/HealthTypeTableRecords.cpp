// What is recorded or happens, and mostly counts by having happened: recordWeight to alcoholConsumption. The columns
// are explained in HealthTypeTable.h.
//
// Sources of the usual amounts:
// - brushing: 4 minutes a day, twice 2, as dental associations advise;
// - drinks: one a day, the least on offer; no amount of alcohol is advised by anybody.

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
using M = qz::QZHKUnit;
using Reads = ShortList<qz::QZHKObjectType, 4>;
using Icons = ShortList<std::string_view, 4>;

/// A row of what counts by having happened: no quantity, nothing to choose.
constexpr HealthTypeRow row(HealthType type, const Reads& reads, Statistics statistics, const Icons& icons,
                            TitleForm title) {
  return {
      .type = type,
      .measured = Measured::samples,
      .reads = reads,
      .statistics = statistics,
      .update = Update::immediate,
      .icons = icons,
      .title = title,
  };
}

/// A measurement that somebody takes, of which the last one is shown.
constexpr HealthTypeRow measurement(HealthType type, const Reads& reads, qz::QZHKUnit latestIn, const Icons& icons,
                                    Update update = Update::immediate) {
  HealthTypeRow measured = row(type, reads, Statistics::mostRecent, icons, TitleForm::record);
  measured.latestIn = latestIn;
  measured.update = update;
  return measured;
}

/// Something that is recorded without an amount.
constexpr HealthTypeRow event(HealthType type, const Reads& reads, const Icons& icons, TitleForm title) {
  return row(type, reads, Statistics::cumulativeSum, icons, title);
}

/// The same, written to the health store when it is completed here.
constexpr HealthTypeRow writtenEvent(HealthType type, const Reads& reads, const Icons& icons, TitleForm title) {
  HealthTypeRow written = event(type, reads, icons, title);
  written.writesBack = true;
  return written;
}

constexpr TitleForm record = TitleForm::record;
constexpr TitleForm heart = TitleForm::heartEvent;

constexpr std::array<HealthTypeRow, numRecordRows> rows{{
    // type, what is read, of measurements the unit of the latest one, icons; of events the form of the title; of what
    // devices record all day how soon it wakes us
    measurement(T::recordWeight, {O::bodyMass}, M::kilogram, {"ic_weight", "ic_scales"}),
    measurement(T::recordBloodPressure, {O::bloodPressureSystolic, O::bloodPressureDiastolic}, M::millimetreOfMercury,
                {"ic_blood_pressure", "ic_heart"}),
    measurement(T::recordBloodGlucose, {O::bloodGlucose}, M::millimolePerLitre, {"ic_glucose", "ic_drop"}),
    measurement(T::recordHeartRate, {O::heartRate}, M::countPerMinute, {"ic_heart_rate", "ic_heart"}, Update::hourly),
    measurement(T::recordWaistCircumference, {O::waistCircumference}, M::centimetre,
                {"ic_tape_measure", "ic_person_standing"}),
    measurement(T::recordBodyTemperature, {O::bodyTemperature}, M::degreeCelsius, {"ic_thermometer"}),
    event(T::recordSexualActivity, {O::sexualActivity}, {"ic_intimacy", "ic_heart"}, record),
    measurement(T::recordBodyFatPercentage, {O::bodyFatPercentage}, M::percent, {"ic_body_fat", "ic_scales"}),
    event(T::recordAudiogram, {O::audiogram}, {"ic_audiogram", "ic_ear"}, record),
    event(T::recordElectroCardiogram, {O::electrocardiogram}, {"ic_ecg", "ic_heart_rate", "ic_heart"}, record),
    measurement(T::recordPeakExpiratoryFlow, {O::peakExpiratoryFlowRate}, M::litrePerMinute,
                {"ic_lungs", "ic_breathe"}),
    measurement(T::recordHeight, {O::height}, M::centimetre, {"ic_height", "ic_tape_measure"}),
    measurement(T::recordInsulin, {O::insulinDelivery}, M::internationalUnit, {"ic_syringe", "ic_drop"}),
    measurement(T::recordInhaler, {O::inhalerUsage}, M::count, {"ic_inhaler", "ic_lungs"}),
    measurement(T::recordOxygenSaturation, {O::oxygenSaturation}, M::percent, {"ic_oxygen", "ic_lungs"}),
    {
        .type = T::toothbrushingEventBrush,
        .measured = Measured::amount,
        .quantities =
            {
                {.unit = U::durationMinutes,
                 .lowest = 0.5,
                 .highest = 10,
                 .step = 0.5,
                 .usual = 4,
                 .steps = singleSteps},
                {.unit = U::durationSeconds,
                 .lowest = 10,
                 .highest = 600,
                 .step = 10,
                 .usual = 240,
                 .steps = singleSteps},
            },
        .speeds = {S::timed},
        .speedSelection = Selection::single,
        .defaultSpeeds = {S::timed},
        .reads = {O::toothbrushingEvent},
        .statistics = Statistics::duration,
        .update = Update::immediate,
        .writesBack = true,
        .icons = {"ic_toothbrush", "ic_tooth"},
        .title = TitleForm::brush,
    },
    writtenEvent(T::toothbrushingEventFloss, {O::flossingEvent}, {"ic_floss", "ic_tooth"}, TitleForm::floss),
    event(T::irregularHeartRhythmEvent, {O::irregularHeartRhythmEvent}, {"ic_heart_irregular", "ic_heart_rate"}, heart),
    event(T::lowHeartRateEvent, {O::lowHeartRateEvent}, {"ic_heart_low", "ic_heart_rate"}, heart),
    event(T::highHeartRateEvent, {O::highHeartRateEvent}, {"ic_heart_high", "ic_heart_rate"}, heart),
    writtenEvent(T::handwashingEvent, {O::handwashingEvent}, {"ic_handwash", "ic_soap"}, TitleForm::handwashing),
    {
        .type = T::alcoholConsumption,
        .measured = Measured::amount,
        .quantities = {{.unit = U::drinks, .lowest = 1, .highest = 20, .step = 1, .usual = 1, .steps = singleSteps}},
        .reads = {O::alcoholicBeverages},
        .statistics = Statistics::cumulativeSum,
        .update = Update::immediate,
        .writesBack = true,
        .icons = {"ic_drink", "ic_wine", "ic_beer", "ic_cocktail"},
        .title = TitleForm::alcohol,
    },
}};

static_assert(isRunOfTypes(rows, T::recordWeight));

}  // namespace

std::span<const HealthTypeRow, numRecordRows> recordRows() { return rows; }

}  // namespace habitra
