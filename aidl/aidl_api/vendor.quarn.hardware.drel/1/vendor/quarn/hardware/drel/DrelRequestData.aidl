// This file is the frozen API of vendor.quarn.hardware.drel. Do not edit it by hand:
// change the interface under aidl/vendor/ and update the dump with the build's
// update-api and freeze-api targets.
package vendor.quarn.hardware.drel;

@VintfStability
parcelable DrelRequestData {
    int resId;
    int resParam;
    @nullable String resValue;
    @nullable String resPath;
    @nullable String resExtra;
}
