package vendor.quarn.hardware.drel;

/**
 * One resource of a request or of a report: an opcode with its parameter and value, or a path.
 */
@VintfStability
parcelable DrelRequestData {
    int resId;
    int resParam;
    @nullable String resValue;
    @nullable String resPath;
    @nullable String resExtra;
}
