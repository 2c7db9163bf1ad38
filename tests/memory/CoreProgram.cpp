// SPDX-License-Identifier: MIT
#include "tests/memory/Program.h"
#include "tests/memory/Rows.h"

namespace sweep {

Program TheProgram()
{
    Program program;
    program.libraries = {
        {"core",    15},
        {"quality", 0 }
    };
    program.rows = AllOf({FrameworkRows(), MatrixRows(), PositioningRows(), CalibrationRows(),
                          GeometryRows(), QualityRows()});
    program.internal = {
        "CInclineSensor_Filter_XY::Turn",
        "CInclineSensor_Filter_XZ::Turn",
        "CInclineSensor_Position::CalculateYaw_ADI",
        "CInclineSensor_Position::CalculateYaw_SCA",
        "CInclineSensor_Position::Heading",
        "CInclineSensor_Position::HeadingByAxes",
        "CInclineSensor_Position::JudgeInterference",
        "CInclineSensor_Position::JudgeStillness",
        "CInclineSensor_Position::Keep",
        "CInclineSensor_Position::KeepPose",
        "CInclineSensor_Position::MagneticModify",
        "CInclineSensor_Position::MeasureByFormulas",
        "CInclineSensor_Position::PoseOf",
        "CInclineSensor_Position::ProjectionAngle",
        "CKFilter::Factor::Set",
        "CKFilter::HasWholeModel",
        "CKFilter::KeepProcessNoise",
        "CKFilter::NoteSeparateStates",
        "CKFilter::StepSeparately",
        "CMagneticConvert::Prepare",
        "CSZMatrix::Block",
        "CSZMatrix::Clear",
        "CSZMatrix::IsVector3",
        "CSZMatrix::JacobiDouble",
        "CSZMatrix::RotateByProducts",
        "CSZMatrix::RotateLines",
        "CSZMatrix::SetSize",
        "CSZMatrix::isSymmetric",
        "CTiltMatrix::Factor",
        "CTiltMatrix::Failed",
        "CTiltMatrix::Inverse",
        "CTiltMatrix::SetSize",
        "CTiltMatrix::SingularityFigure",
        "CTiltMatrix::TakeFrom",
        "framework::FileReplacement::State::Begin",
        "framework::FileReplacement::State::BeginInFolder",
        "framework::FileReplacement::State::Prepare",
        "framework::FileReplacement::State::RenameOrOverwrite",
        "framework::FileReplacement::State::Replace",
        "framework::FileReplacement::State::Settle",
        "framework::FileReplacement::State::Write",
    };
    return program;
}

} // namespace sweep
