package vendor.quarn.hardware.drel;

import vendor.quarn.hardware.drel.DrelRequestData;
import vendor.quarn.hardware.drel.IDrelCallback;

/**
 * One request to the resource-control service. requestType selects what the service does with
 * it; each request sets only the fields it uses.
 */
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
