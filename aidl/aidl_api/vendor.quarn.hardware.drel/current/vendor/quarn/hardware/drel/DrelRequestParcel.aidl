// This file is the frozen API of vendor.quarn.hardware.drel. Do not edit it by hand:
// change the interface under aidl/vendor/ and update the dump with the build's
// update-api and freeze-api targets.
package vendor.quarn.hardware.drel;

import vendor.quarn.hardware.drel.DrelRequestData;
import vendor.quarn.hardware.drel.IDrelCallback;

@VintfStability
parcelable DrelRequestParcel {
    int requestType;
    DrelRequestData[] resources;
    boolean flag;
    int param3;
    int param5;
    long timeout;
    @nullable String[] tags;
    int reqId;
    @nullable IDrelCallback callback;
    @nullable String pkg;
    @nullable String identity;
    @nullable int[] intList;
}
